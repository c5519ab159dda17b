// SPDX-License-Identifier: Apache-2.0
// The monitor's own menu and its messages, drawn over the picture.
import { panel } from "./geometry.js";
import { aspects, pipModes } from "./names.js";
import { put, putText, svg } from "./svg.js";

const width = 700;
const rowHeight = 64;
const rows = [
    ["Input", (s) => s.mainInput.name],
    ["Colour preset", (s) => s.preset("name")],
    ["Luminance", (s) => `${s.luminance} cd/m²`],
    ["Gamma", (s) => s.preset("gamma")],
    ["Aspect", (s) => aspects[s.get("display_aspect_ratio")]],
    ["Second picture", (s) => pipModes[s.get("pip_mode")]],
    ["Language", (s) => `Code ${s.get("menu_language")}`],
];
const height = 110 + rows.length * rowHeight + 30;

// A change of one of these shows the menu, as one wants to see it when it is moved.
const ownSettings = ["osd_position_x", "osd_position_y", "menu_opacity", "display_rotation", "menu_language"];

/** Shows something for a while. */
class Timed {
    constructor(element, onEnd = () => {}) {
        this.element = element;
        this.onEnd = onEnd;
        this.hide();
    }

    get isShown() {
        return this.element.getAttribute("visibility") === "visible";
    }

    show(seconds) {
        clearTimeout(this.timer);
        put(this.element, { visibility: "visible" });
        this.timer = setTimeout(() => this.hide(), seconds * 1000);
    }

    hide() {
        clearTimeout(this.timer);
        put(this.element, { visibility: "hidden" });
        this.onEnd();
    }
}

export class Menu {
    constructor() {
        this.values = rows.map(() => svg("text", { x: width - 40, "text-anchor": "end", class: "menu-value" }));
        const lines = rows.map(([name], i) => {
            const y = 150 + i * rowHeight;
            put(this.values[i], { y });
            return svg("g", {}, svg("text", { x: 40, y, class: "menu-name" }, name), this.values[i]);
        });
        this.box = svg("g", { id: "menu" },
            svg("rect", { width, height, rx: 12, class: "menu-ground" }),
            svg("text", { x: 40, y: 72, class: "menu-title" }, "Menu"),
            svg("path", { d: `M40 100H${width - 40}`, class: "menu-line" }), lines);
        this.message = svg("g", { id: "message" }, svg("rect", { rx: 12, class: "menu-ground" }),
            svg("text", { x: 40, y: 64, class: "menu-title" }), svg("text", { x: 40, y: 116, class: "menu-name" }));
        this.due = svg("g", { id: "recalibration", transform: "translate(80 70)" },
            svg("rect", { width: 640, height: 84, rx: 12, class: "menu-ground" }),
            svg("text", { x: 32, y: 54, class: "menu-due" }, "Recalibration is due"));
        this.group = svg("g", { class: "on-screen" }, this.due, this.message, this.box);
        this.menuTime = new Timed(this.box, () => this.onToggle?.(false));
        this.messageTime = new Timed(this.message);
    }

    /** Opens the menu, or closes it. */
    toggle() {
        if (this.menuTime.isShown || !this.state?.isOn) {
            this.menuTime.hide();
        } else {
            this.openMenu();
        }
    }

    openMenu() {
        this.menuTime.show(this.state.get("menu_timeout"));
        this.onToggle?.(true);
    }

    say(title, text) {
        const [ground, first, second] = this.message.children;
        putText(first, title);
        putText(second, text);
        const messageWidth = 80 + 24 * Math.max(title.length * 1.15, text.length);
        put(ground, { width: messageWidth, height: 152 });
        put(this.message, { transform: `translate(${(panel.width - messageWidth) / 2} ${panel.height - 260})` });
        this.messageTime.show(this.state.get("menu_timeout"));
        this.onMessage?.(`${title}: ${text}`);
    }

    update(state) {
        const before = this.state;
        this.state = state;
        rows.forEach(([, value], i) => putText(this.values[i], value(state)));
        const isTurned = state.get("display_rotation") !== 0;
        const [w, h] = isTurned ? [height, width] : [width, height];
        const x = Math.min(state.get("osd_position_x"), panel.width - w);
        const y = Math.min(state.get("osd_position_y"), panel.height - h);
        put(this.box, {
            transform: isTurned ? `translate(${x + w} ${y}) rotate(90)` : `translate(${x} ${y})`,
            opacity: state.get("menu_opacity") / 10000,
        });
        put(this.due, { visibility: state.isOn && state.isRecalibrationDue ? "visible" : "hidden" });
        if (!state.isOn) {
            this.menuTime.hide();
            this.messageTime.hide();
        } else if (before !== undefined) {
            this.tellChanges(before, state);
        }
    }

    tellChanges(before, state) {
        const differs = (name) => before.get(name) !== state.get(name);
        const input = state.mainInput;
        if (!before.isOn && state.get("show_power_on_info")) {
            this.say("Marovelton", `${state.preset("name")}, ${state.luminance} cd/m²`);
        } else if (differs("video_input") && state.get("show_source_info")) {
            this.say(input.name, input.isActive ? `${input.width} × ${input.height}` : "No signal");
        } else if (differs("active_color_space") && state.get("show_color_space_info")) {
            this.say(state.preset("name"), `Gamma ${state.preset("gamma")}, ${state.luminance} cd/m²`);
        }
        if (ownSettings.some(differs) && before.isOn) {
            this.openMenu();
        }
    }
}
