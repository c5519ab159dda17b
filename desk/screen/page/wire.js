// SPDX-License-Identifier: Apache-2.0
// The list of messages: what passed between the library and the display engine.
import { bytesOf, decode, fields } from "./message.js";
import { html, put, putText } from "./svg.js";

const mostKept = 1000;
const shownAtOnce = 100;

function timeText(milliseconds) {
    const time = new Date(milliseconds);
    const digits = (value, count) => String(value).padStart(count, "0");
    return `${digits(time.getHours(), 2)}:${digits(time.getMinutes(), 2)}:${digits(time.getSeconds(), 2)}.` +
        digits(time.getMilliseconds(), 3);
}

function durationText(microseconds) {
    return microseconds < 1000 ? `${microseconds} µs` : microseconds < 1e6 ? `${(microseconds / 1000).toFixed(1)} ms` :
        `${(microseconds / 1e6).toFixed(1)} s`;
}

function spaced(hex) {
    return hex.match(/../g).join(" ");
}

/** The 40 bytes, each field marked and named. */
function marked(title, hex, other) {
    const bytes = bytesOf(hex);
    const otherBytes = bytesOf(other);
    const used = bytes[9];
    const parts = fields.map(({ name, at, length, entry }) => {
        const isIdle = entry !== undefined && entry >= used;
        const differs = bytes.slice(at, at + length).some((byte, i) => byte !== otherBytes[at + i]);
        const text = bytes.slice(at, at + length).map((byte) => byte.toString(16).padStart(2, "0")).join(" ");
        return html("span", { class: `field of-${name.replace(" ", "-")}${isIdle ? " idle" : ""}${differs ? " differs" : ""}`,
            "data-field": entry === undefined ? name : `${name} ${entry}` },
        html("i", {}, name), html("code", {}, text));
    });
    return html("div", { class: "bytes", "data-hex": hex }, html("h3", {}, title), html("div", { class: "fields" }, parts));
}

class Message {
    constructor(told, model) {
        Object.assign(this, told);
        this.said = decode(told.request, model);
        this.replied = decode(told.answer, model);
        const entries = this.said.entries.map(({ register, value }) => (this.said.isSet ? `${register} = ${value}` : register));
        this.what = entries.join(", ") || "the whole group";
        const statuses = this.replied.entries.map((each) => each.status).filter((each) => each !== "");
        this.result = statuses.length > 0 ? `${this.outcome}: ${[...new Set(statuses)].join(", ")}` : this.outcome;
        this.isTroubled = this.outcome !== "answered" && this.outcome !== "not awaited" || statuses.length > 0;
        this.text = [timeText(this.time), this.said.command, this.said.group, this.what, this.result, this.request, spaced(this.request)]
            .join(" ").toLowerCase();
    }

    get element() {
        this.made ??= this.make();
        return this.made;
    }

    make() {
        const details = html("details", { "data-number": this.number, class: this.isTroubled ? "troubled" : "" },
            html("summary", {},
                html("span", { class: "time" }, timeText(this.time)),
                html("span", { class: "command" }, this.said.isSet ? "SET" : "GET"),
                html("span", { class: "group" }, this.said.group),
                html("span", { class: "what" }, this.what),
                html("span", { class: "result" }, this.result),
                html("span", { class: "duration" }, durationText(this.duration))));
        details.addEventListener("toggle", () => {
            if (details.open && details.children.length === 1) {
                details.append(html("p", { class: "words" }, `${this.said.command} from ${this.said.source}, message ${this.number}`),
                    marked("Request", this.request, this.request), marked("Answer", this.answer, this.request));
            }
        });
        return html("li", {}, details);
    }

    get line() {
        return [timeText(this.time), this.said.command, this.said.group, this.what, this.result, durationText(this.duration),
            spaced(this.request), spaced(this.answer)].join("\t");
    }
}

export class Wire {
    constructor({ list, count, filter, pause, copy, more }, model, say) {
        Object.assign(this, { list, count, filter, pause, more, model, say });
        this.messages = []; // the newest first
        this.board = undefined;
        this.limit = shownAtOnce;
        filter.addEventListener("input", () => this.show());
        pause.addEventListener("click", () => this.setPaused(this.held === undefined));
        copy.addEventListener("click", () => this.copy());
        more.addEventListener("click", () => {
            this.limit += shownAtOnce;
            this.show();
        });
    }

    add({ board, messages }) {
        if (board !== this.board) { // an engine that counts anew
            this.board = board;
            this.messages = [];
        }
        const last = this.messages[0]?.number ?? 0;
        const added = messages.filter((each) => each.number > last).map((each) => new Message(each, this.model));
        this.messages.unshift(...added.reverse());
        this.messages.length = Math.min(this.messages.length, mostKept);
        this.show();
    }

    setPaused(isPaused) {
        this.held = isPaused ? [...this.messages] : undefined;
        put(this.pause, { "aria-pressed": isPaused });
        this.show();
    }

    /** What passes the filter: every word of it. */
    get matching() {
        const words = this.filter.value.toLowerCase().split(/\s+/).filter((each) => each !== "");
        return (this.held ?? this.messages).filter((message) => words.every((word) => message.text.includes(word)));
    }

    show() {
        const found = this.matching;
        const wanted = found.slice(0, this.limit).map((message) => message.element);
        // Those that are there stay where they are: what is open or has the focus keeps it.
        const keep = new Set(wanted);
        for (const each of [...this.list.children]) {
            if (!keep.has(each)) {
                each.remove();
            }
        }
        wanted.forEach((each, i) => {
            if (this.list.children[i] !== each) {
                this.list.insertBefore(each, this.list.children[i] ?? null);
            }
        });
        this.more.hidden = found.length <= this.limit;
        const waiting = this.held === undefined ? 0 : this.messages.filter((each) => each.number > (this.held[0]?.number ?? 0)).length;
        putText(this.count, `${found.length} of ${(this.held ?? this.messages).length}${waiting > 0 ? `, ${waiting} waiting` : ""}`);
    }

    async copy() {
        const text = this.matching.map((message) => message.line).join("\n");
        try {
            await navigator.clipboard.writeText(`${text}\n`);
            this.say(`${this.matching.length} messages copied`);
        } catch {
            this.say("The browser did not let this page copy");
        }
    }
}
