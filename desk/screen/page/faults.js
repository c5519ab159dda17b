// SPDX-License-Identifier: Apache-2.0
// The faults that the desk monitor can be told to have, as switches; standby among them.
import { change, mayChange } from "./connection.js";
import { html, put } from "./svg.js";

const titles = {
    "busy": "Busy", "silent": "Silent", "slow": "Slow", "lose-reply": "Lost reply", "fail-read": "Failing reads",
    "fail-update": "Failing updates", "fail-user": "No users", "fail-queue": "No queues", "fail-send": "Nothing can be sent",
    "fail-receive": "Nothing can be received",
};

class Fault {
    constructor(row, onTrouble) {
        this.name = row.name;
        const id = `fault-${row.name}`;
        this.button = html("button", { type: "button", role: "switch", id, "aria-checked": "false", disabled: !mayChange,
            "data-fault": row.name, "aria-describedby": `${id}-meaning`, onclick: () => this.turn(onTrouble) },
        html("span", { class: "knob" }), titles[row.name] ?? row.name);
        this.argument = row.argument === "" ? null : html("input", { type: "text", value: row.default, disabled: !mayChange,
            "data-argument": row.name, placeholder: row.argument, "aria-label": `${titles[row.name] ?? row.name}: ${row.argument}`,
            onchange: () => this.isOn && this.send(true, onTrouble), autocomplete: "off", spellcheck: "false" });
        this.item = html("li", {}, this.button, this.argument, html("p", { id: `${id}-meaning` }, row.meaning));
    }

    get isOn() {
        return this.button.getAttribute("aria-checked") === "true";
    }

    turn(onTrouble) {
        this.send(!this.isOn, onTrouble);
    }

    async send(on, onTrouble) {
        try {
            await change({ fault: this.name, on, argument: on && this.argument ? this.argument.value : "" });
        } catch (error) {
            onTrouble(error.message);
        }
    }

    update(state) {
        const argument = state.faults[this.name];
        put(this.button, { "aria-checked": argument !== undefined });
        if (argument !== undefined && this.argument && document.activeElement !== this.argument) {
            this.argument.value = argument;
        }
    }
}

export class Faults {
    constructor(list, model, onTrouble) {
        this.faults = model.faults.map((row) => new Fault(row, onTrouble));
        this.standby = html("button", { type: "button", role: "switch", id: "fault-standby", "data-fault": "standby",
            "aria-checked": "false", disabled: !mayChange, "aria-describedby": "fault-standby-meaning",
            onclick: () => change({ power: this.standby.getAttribute("aria-checked") === "true" })
                .catch((error) => onTrouble(error.message)) }, html("span", { class: "knob" }), "Standby");
        list.replaceChildren(...this.faults.map((each) => each.item),
            html("li", {}, this.standby, html("p", { id: "fault-standby-meaning" }, "the monitor is switched off softly")));
    }

    update(state) {
        this.faults.forEach((each) => each.update(state));
        put(this.standby, { "aria-checked": !state.isOn });
    }
}
