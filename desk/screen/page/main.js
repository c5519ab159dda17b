// SPDX-License-Identifier: Apache-2.0
// Brings the parts of the page together: what the program tells goes to each of them.
import { Colour } from "./colour.js";
import { change, loadModel, mayChange, watch } from "./connection.js";
import { Controls, Panel } from "./controls.js";
import { Faults } from "./faults.js";
import { State } from "./names.js";
import { Picture, showFacts } from "./picture.js";
import { html, put, putText } from "./svg.js";
import { Wire } from "./wire.js";

const part = (id) => document.getElementById(id);
const readOnly = "This page shows the monitor and changes nothing: it was opened without the token. Open the URL that was " +
    "printed when the screen was started.";
const links = { live: "Live", lost: "Connecting again" };

let noticeTimer;

/** Says what went wrong, for a while; what stays is said again then. */
function notice(text) {
    clearTimeout(noticeTimer);
    const shown = text ?? (mayChange ? "" : readOnly);
    putText(part("notice"), shown);
    part("notice").hidden = shown === "";
    if (text !== undefined) {
        noticeTimer = setTimeout(() => notice(), 8000);
    }
}

/** For screen readers. */
function say(text) {
    putText(part("spoken"), text);
}

function attempt(what) {
    change(what).catch((error) => notice(error.message));
}

function showLink(state, link) {
    const hasEngine = state?.engine !== false;
    const word = link === "live" && !hasEngine ? "No display engine runs" : links[link];
    put(part("connection"), { "data-state": link === "live" && !hasEngine ? "waiting" : link });
    putText(part("connection"), word);
}

async function start() {
    const model = await loadModel();
    const picture = new Picture(part("screen"), part("halo"));
    const colour = new Colour(part("diagram"), part("legend"), part("chromaticities"), { xy: part("diagram-xy"), uv: part("diagram-uv") });
    const panel = new Panel({ functions: part("function-buttons"), menu: part("menu-button"), power: part("power-button"),
        panel: part("panel") }, model, {
        press: (button) => attempt({ press: button }),
        power: (power) => attempt({ power }),
        menu: () => picture.menu.toggle(),
    });
    const controls = new Controls(part("groups"), model, notice);
    const faults = new Faults(part("fault-list"), model, notice);
    const wire = new Wire({ list: part("messages"), count: part("wire-count"), filter: part("wire-filter"),
        pause: part("wire-pause"), copy: part("wire-copy"), more: part("wire-more") }, model, say);
    picture.menu.onToggle = (isOpen) => put(part("menu-button"), { "aria-pressed": isOpen });
    picture.menu.onMessage = say;

    let state;
    let link = "lost";
    watch({
        onState: (told) => {
            state = new State(told, model);
            for (const each of [picture, colour, panel, controls, faults]) {
                each.update(state);
            }
            showFacts(part("facts"), state, html);
            document.title = `${state.get("display_name") || "Desk monitor"} (simulated)`;
            showLink(state, link);
            put(document.documentElement, { "data-ready": "yes" });
        },
        onMessages: (told) => wire.add(told),
        onLink: (now) => {
            link = now;
            showLink(state, link);
        },
    });
    notice();
}

start().catch((error) => notice(`The page cannot start: ${error.message}`));
