// SPDX-License-Identifier: Apache-2.0
// The stream of events from the program, and the changes to it.

const retryAfter = 2000;

/** The token comes with the URL and stays in this tab; the address bar and the history do not keep it. */
function takeToken() {
    const given = location.hash.slice(1);
    if (/^[0-9a-f]{32}$/.test(given)) {
        sessionStorage.setItem("token", given);
        history.replaceState(null, "", location.pathname);
    }
    return sessionStorage.getItem("token");
}

const token = takeToken();

/** False: this page shows, and changes nothing. */
export const mayChange = token !== null;

/** Watches for as long as the page is there: onState and onMessages get what is told, onLink whether it is live. */
export function watch({ onState, onMessages, onLink }) {
    let source;
    const open = () => {
        source = new EventSource("/events");
        source.addEventListener("open", () => onLink("live"));
        source.addEventListener("state", (event) => onState(JSON.parse(event.data)));
        source.addEventListener("messages", (event) => onMessages(JSON.parse(event.data)));
        source.addEventListener("error", () => {
            onLink("lost");
            if (source.readyState === EventSource.CLOSED) { // refused: the browser does not try again
                setTimeout(open, retryAfter);
            }
        });
    };
    open();
    addEventListener("pagehide", () => source.close());
    addEventListener("pageshow", (event) => event.persisted && open());
}

/** Asks for a change; throws an Error that says why there is none. */
export async function change(what) {
    let answer;
    try {
        answer = await fetch("/change", {
            method: "POST",
            headers: { "Content-Type": "application/json", "X-Desk-Token": token ?? "" },
            body: JSON.stringify(what),
        });
    } catch {
        throw new Error("desk-screen does not answer");
    }
    if (!answer.ok) {
        throw new Error((await answer.text()).trim());
    }
}

export async function loadModel() {
    const answer = await fetch("/model.json");
    return answer.json();
}
