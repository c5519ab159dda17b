// SPDX-License-Identifier: Apache-2.0
// What a hand at the monitor could turn: the front panel, and the rest of the monitor's menu as a list.
import { change, mayChange } from "./connection.js";
import * as names from "./names.js";
import { html, put, putText } from "./svg.js";

const onOff = ["Off", "On"];

// Groups of the list. A setting with names for its values is chosen from them, one without is turned from its least value to
// its greatest, and told with its unit.
const groups = [
    ["Picture", [
        ["video_input", "Input", names.inputs], ["active_color_space", "Colour preset", "presets"],
        ["luminance", "Luminance", undefined, "cd/m²"], ["display_aspect_ratio", "Aspect", names.aspects],
        ["scroll_4k_position_x", "4K region, left", undefined, "px"], ["scroll_4k_position_y", "4K region, top", undefined, "px"],
        ["source_scaling_4k", "4K source", names.scalings], ["dci_image_region", "DCI region", names.regions],
        ["show_cropped_region", "Cropped region", ["Hidden", "Shown"]], ["cropped_region_opacity", "Its opacity", undefined, "%"],
        ["use_video_levels", "Levels", ["Full range", "Video levels"]], ["overscan", "Overscan", onOff],
        ["show_blue_channel", "Blue only", onOff],
    ]],
    ["Second picture", [
        ["pip_mode", "Shown", names.pipModes], ["pip_source", "Input", names.inputs], ["pip_size", "Size", names.pipSizes],
        ["pip_height", "Height", undefined, "px"], ["pip_position", "Position", names.pipPositions],
        ["pip_position_x", "Left", undefined, "px"], ["pip_position_y", "Top", undefined, "px"], ["pip_overscan", "Overscan", onOff],
        ["pip_video_levels", "Levels", ["Full range", "Video levels"]], ["pip_dci_image_region", "DCI region", names.regions],
        ["pip_show_cropped_region", "Cropped region", ["Hidden", "Shown"]],
    ]],
    ["Test pattern", [
        ["test_pattern_enabled", "Generator", onOff], ["test_pattern", "Pattern", names.patterns], ["test_pattern_red", "Red"],
        ["test_pattern_green", "Green"], ["test_pattern_blue", "Blue"],
    ]],
    ["Menu and messages", [
        ["osd_position_x", "Left", undefined, "px"], ["osd_position_y", "Top", undefined, "px"],
        ["menu_opacity", "Opacity", undefined, (value) => `${value / 100} %`], ["display_rotation", "Rotation", names.rotations],
        ["menu_timeout", "Time-out", undefined, "s"], ["menu_language", "Language code"],
        ["show_power_on_info", "Message when switched on", onOff], ["show_source_info", "Message on a new input", onOff],
        ["show_color_space_info", "Message on a new preset", onOff], ["calibration_notification", "Say when recalibration is due", onOff],
        ["recalibration_alarm", "Recalibrate after", undefined, "h"],
    ]],
    ["Buttons", [
        ["function_button1.setting", "Function button 1", "actions"], ["function_button2.setting", "Function button 2", "actions"],
        ["function_button3.setting", "Function button 3", "actions"], ["function_button4.setting", "Function button 4", "actions"],
        ["function_button_mode", "Mode of function buttons", ["Mode 0", "Mode 1"]], ["bezel_button_color", "Light", names.lights],
        ["bezel_button_brightness", "Brightness"], ["bezel_button_auto_fade", "Fade by themselves", onOff],
    ]],
];
const cables = "Cables";

function limits(model, name) {
    return name === "luminance" ? { ...model.luminance, step: 1 } : model.settings[name];
}

/** One setting of the list. */
class Control {
    constructor(model, [name, label, choices, unit], onTrouble) {
        this.name = name;
        this.words = typeof unit === "function" ? unit : (value) => `${value} ${unit ?? ""}`.trim();
        this.choices = choices;
        this.onTrouble = onTrouble;
        const id = `set-${name.replace(".", "-")}`;
        const { minimum, maximum, step } = limits(model, name);
        const turned = () => this.turn();
        const common = { id, "data-setting": name, disabled: !mayChange };
        if (choices !== undefined) {
            this.input = html("select", { ...common, onchange: turned });
            const options = choices === "actions" ? Object.entries(model.actions) : this.numbered(model, choices, minimum);
            this.input.append(...options.map(([value, text]) => html("option", { value }, text)));
        } else {
            this.input = html("input", { type: "range", min: minimum, max: maximum, step, ...common, onchange: turned,
                oninput: () => this.tell(this.input.value) });
            this.output = html("output", { for: id });
        }
        this.row = html("div", { class: "control" }, html("label", { for: id }, label), this.input, this.output);
    }

    numbered(model, choices, minimum) {
        const texts = choices === "presets" ? Array(model.presets).fill("") : choices;
        return texts.map((text, i) => [i + minimum, text]);
    }

    async turn() {
        try {
            await change({ set: this.name, value: Number(this.input.value) });
        } catch (error) {
            this.onTrouble(error.message);
            this.show(this.state);
        }
    }

    tell(value) {
        if (this.output !== undefined) {
            putText(this.output, this.words(value));
            put(this.input, { "aria-valuetext": this.words(value) });
        }
    }

    show(state) {
        this.state = state;
        const value = this.name === "luminance" ? state.luminance : state.get(this.name);
        if (this.choices === "presets") {
            [...this.input.options].forEach((option, i) => putText(option, state.preset("name", i + 1)));
        }
        if (this.input.value !== String(value)) {
            this.input.value = value;
        }
        this.tell(value);
    }
}

export class Controls {
    constructor(place, model, onTrouble) {
        this.parts = [];
        const drawn = groups.map(([title, rows], i) => {
            const controls = rows.map((row) => new Control(model, row, onTrouble));
            this.parts.push(...controls);
            return html("details", { open: i === 0 }, html("summary", {}, title), html("div", { class: "rows" },
                controls.map((control) => control.row)));
        });
        this.cables = names.inputs.map((name, i) => {
            const button = html("button", { type: "button", role: "switch", "data-cable": i + 1, disabled: !mayChange,
                onclick: () => change({ connect: i + 1, on: button.getAttribute("aria-checked") !== "true" })
                    .catch((error) => onTrouble(error.message)) }, html("span", { class: "knob" }), `${name} is connected`);
            return button;
        });
        place.replaceChildren(...drawn, html("details", {}, html("summary", {}, cables), html("div", { class: "rows" }, this.cables)));
    }

    update(state) {
        this.parts.forEach((each) => each.show(state));
        this.cables.forEach((each, i) => put(each, { "aria-checked": state.input(i).isActive }));
    }
}

const fadeAfter = 4000;

/** The buttons below the picture. */
export class Panel {
    constructor({ functions, menu, power, panel }, model, actions) {
        this.panel = panel;
        this.power = power;
        this.model = model;
        this.functions = Array.from({ length: model.buttons }, (_, i) => html("button", { type: "button", class: "lit",
            "data-press": i + 1, disabled: !mayChange, onclick: () => actions.press(i + 1) }, html("b", {}, `F${i + 1}`), html("span", {})));
        functions.replaceChildren(...this.functions);
        menu.addEventListener("click", actions.menu);
        power.disabled = !mayChange;
        power.addEventListener("click", () => actions.power(!this.state.isOn));
        for (const event of ["pointermove", "focusin", "click"]) {
            panel.addEventListener(event, () => this.wake());
        }
    }

    wake() {
        clearTimeout(this.fading);
        this.panel.classList.remove("faded");
        if (this.state?.get("bezel_button_auto_fade")) {
            this.fading = setTimeout(() => this.panel.classList.add("faded"), fadeAfter);
        }
    }

    update(state) {
        const before = this.state;
        this.state = state;
        this.functions.forEach((button, i) => {
            putText(button.lastChild, this.model.actions[state.get(`function_button${i + 1}.setting`)]);
        });
        put(this.power, { "aria-pressed": state.isOn, "data-power": state.isOn ? "on" : "standby" });
        put(this.panel, { "data-light": names.lights[state.get("bezel_button_color")],
            "data-brightness": state.get("bezel_button_brightness"), "data-mode": state.get("function_button_mode"),
            "data-fade": state.get("bezel_button_auto_fade") ? "on" : "off" });
        this.panel.style.setProperty("--light-colour", names.lightColours[state.get("bezel_button_color")]);
        this.panel.style.setProperty("--light-brightness", state.isOn ? state.get("bezel_button_brightness") / 20 : 0);
        if (before?.get("bezel_button_auto_fade") !== state.get("bezel_button_auto_fade")) {
            this.wake();
        }
    }
}
