#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The one-page reference in a browser, 390 pixels wide and 1280, in light and in dark: nothing has to be scrolled sideways, the
# search finds what a client printed and says when there is nothing, and "/" leads to it.
#
#   browser_test.sh PAGE [DIRECTORY_FOR_PICTURES]
set -eu
. "$(dirname "$0")/../packaging/check.sh"
page=$1
command -v chromium >/dev/null || { echo 'Skipped: chromium is not installed (package chromium).'; exit 77; }
scratch
cp "$page" "$scratch/reference.html"

# A window has at least 500 pixels, a frame as many as it is given. What the page does in it is written down by the frame's
# owner; the last line says that all was asked.
cat >"$scratch/asks.html" <<'HTML'
<!DOCTYPE html><meta charset="utf-8"><style>body { margin: 0 } iframe { border: 0; height: 1600px }</style>
<iframe id="frame"></iframe><pre id="found"></pre>
<script>
const frame = document.getElementById('frame');
const say = (what, value) => { document.getElementById('found').textContent += `${what}: ${value}\n`; };
const pause = milliseconds => new Promise(done => setTimeout(done, milliseconds));
async function ask() {
    const page = frame.contentDocument, view = frame.contentWindow;
    const box = page.getElementById('filter'), nothing = page.getElementById('nothing');
    const isSeen = element => element.getClientRects().length !== 0;
    const seen = selector => [...page.querySelectorAll(selector)].filter(isSeen);
    const search = async text => {
        box.value = text;
        box.dispatchEvent(new view.Event('input'));
        await pause(300);
    };
    const press = (key, target) => {
        const event = new view.KeyboardEvent('keydown', { key: key, bubbles: true, cancelable: true });
        target.dispatchEvent(event);
        return event.defaultPrevented;
    };
    say('width', view.innerWidth);
    say('dark', view.matchMedia('(prefers-color-scheme: dark)').matches);
    const colour = element => view.getComputedStyle(element).color + ' on ' + view.getComputedStyle(page.body).backgroundColor;
    say('colours', colour(page.body));
    say('wider than its window', page.documentElement.scrollWidth > page.documentElement.clientWidth);
    const wide = seen('main *, nav *').filter(each => each.getBoundingClientRect().right > view.innerWidth + 0.5 && !each.closest('.table'));
    say('elements beyond the edge', wide.length + wide.slice(0, 3).map(each => ' ' + each.tagName + ' ' + each.textContent.slice(0, 40)).join());
    // In a wide window a wide table may scroll in its own place; in a narrow one its rows are one below the other.
    if (view.innerWidth < 640) {
        say('tables that scroll', seen('.table').filter(each => each.scrollWidth > each.clientWidth).length);
    }
    const row = page.getElementById('Monitor.EnabledState'), last = row.lastElementChild;
    say('the column of a default', isSeen(page.querySelector('thead')) ? 'headed' : view.getComputedStyle(last, '::before').content);

    say('/ is taken', press('/', page.body));
    say('then the search has the focus', page.activeElement === box);
    say('/ in the search is typed', !press('/', box));
    say('before a search', nothing.hidden);
    await search('* wbemcli: Cim: (7) CIM_ERR_NOT_SUPPORTED: SetNothing');
    say('a text that there is not', isSeen(nothing) ? nothing.textContent : 'nothing is said');
    say('and what is left', seen('main section').length);
    await search('* wbemcli: Cim: (1) CIM_ERR_FAILED: PIP mode or picture beside picture is off. Unable to set the value for pip size');
    say('a line that wbemcli printed', isSeen(nothing) ? 'is not found' : 'is found');
    say('its method', seen('section[id="PictureInPicture.SetPIPSize"]').length);
    say('another method', seen('section[id="Monitor.SetName"]').length);
    await search('TransitioningToState');
    say('a property', seen('tr[id="Monitor.TransitioningToState"]').length);
    say('wider then', page.documentElement.scrollWidth > page.documentElement.clientWidth);
    await search('');
    say('all is back', seen('section[id="Monitor.SetName"]').length + ' ' + nothing.hidden);
    say('done', true);
}
const parts = new URLSearchParams(location.search);
frame.style.width = parts.get('width') + 'px';
frame.onload = () => ask().catch(problem => say('problem', problem));
frame.src = 'reference.html';
</script>
HTML

browse() { # browse SCHEME(0: dark, 1: light) WIDTH ARGUMENT...
    scheme=$1 width=$2
    shift 2
    HOME=$scratch timeout 300 chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking \
        --disable-component-update --disable-sync --host-resolver-rules='MAP * ~NOTFOUND' --user-data-dir="$scratch/profile" \
        --allow-file-access-from-files --blink-settings=preferredColorScheme="$scheme" --window-size=1400,1600 \
        --virtual-time-budget=60000 "$@" "file://$scratch/asks.html?width=$width" 2>"$scratch/log"
}

expect_page() { # expect_page SCHEME WIDTH DARK COLOURS TABLES COLUMN
    browse "$1" "$2" --dump-dom >"$scratch/dom" || { tail -5 "$scratch/log"; }
    expect "$2 pixels, dark: $3" "width: $2
dark: $3
colours: $4
wider than its window: false
elements beyond the edge: 0
$5the column of a default: $6
/ is taken: true
then the search has the focus: true
/ in the search is typed: true
before a search: true
a text that there is not: Nothing found.
and what is left: 0
a line that wbemcli printed: is found
its method: 1
another method: 0
a property: 1
wider then: false
all is back: 1 true
done: true" "$(sed -n '/<pre id="found">/,/<\/pre>/p' "$scratch/dom" | sed 's/.*<pre id="found">//; s/<\/pre>.*//' | sed '/^$/d')"
    [ -z "${pictures-}" ] || browse "$1" "$2" --screenshot="$pictures/reference-$2-$3.png" >/dev/null
}
pictures=${2-}
none_scrolls='tables that scroll: 0
'
expect_page 1 390 false 'rgb(29, 36, 48) on rgb(255, 255, 255)' "$none_scrolls" '"Value from the class: "'
expect_page 0 390 true 'rgb(223, 229, 238) on rgb(20, 24, 31)' "$none_scrolls" '"Value from the class: "'
expect_page 1 1280 false 'rgb(29, 36, 48) on rgb(255, 255, 255)' '' headed
report
