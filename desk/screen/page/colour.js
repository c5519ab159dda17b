// SPDX-License-Identifier: Apache-2.0
// The chromaticity diagram: the spectral locus, and the triangles and white points of the presets.
import { locus, toUv, toXy } from "./locus.js";
import { html, put, svg } from "./svg.js";

const size = 520;
const margin = { left: 58, right: 14, top: 14, bottom: 40 };
const corners = ["red", "green", "blue"];
const labelled = [460, 480, 490, 500, 520, 540, 560, 580, 600, 620, 700];
const colours = ["#e0218a", "#0091a8", "#3f7fe0", "#7a5be0", "#c47a12", "#2d9a46", "#d24a2c"];

const diagrams = {
    xy: { width: 0.8, height: 0.9, axes: ["x", "y"], fields: ["x", "y"], of: (point) => [point.x, point.y], back: (x, y) => ({ x, y }) },
    uv: {
        width: 0.65, height: 0.65, axes: ["u′", "v′"], fields: ["u", "v"],
        of: (point) => { const { u, v } = toUv(point); return [u, v]; }, back: (u, v) => toXy({ u, v }),
    },
};

const plot = { width: size - margin.left - margin.right, height: size - margin.top - margin.bottom };

function linearToSrgb(value) {
    return value <= 0.0031308 ? 12.92 * value : 1.055 * value ** (1 / 2.4) - 0.055;
}

/** The colour of a chromaticity as far as a screen has it, as light as it can be. */
function shownColour({ x, y }) {
    const [X, Z] = [x / y, (1 - x - y) / y];
    const linear = [
        3.2406 * X - 1.5372 - 0.4986 * Z,
        -0.9689 * X + 1.8758 + 0.0415 * Z,
        0.0557 * X - 0.204 + 1.057 * Z,
    ].map((each) => Math.max(0, each));
    const most = Math.max(...linear);
    return linear.map((each) => Math.round(255 * linearToSrgb(each / most)));
}

export class Colour {
    constructor(place, legend, values, buttons) {
        this.place = place;
        this.legend = legend;
        this.values = values;
        this.buttons = buttons;
        for (const [kind, button] of Object.entries(buttons)) {
            button.addEventListener("click", () => this.choose(kind));
        }
        this.choose("xy");
    }

    choose(kind) {
        this.kind = kind;
        this.diagram = diagrams[kind];
        for (const [each, button] of Object.entries(this.buttons)) {
            put(button, { "aria-pressed": each === kind });
        }
        this.presets = svg("g", { id: "presets" });
        this.drawn = "";
        this.drawing = svg("svg", { viewBox: `0 0 ${size} ${size}`, id: "chromaticity", role: "group", "data-diagram": kind,
            "aria-label": `Chromaticity diagram, CIE ${kind === "xy" ? "1931 x, y" : "1976 u′, v′"}` },
        this.axes(), this.horseshoe(), this.presets);
        this.canvas = html("canvas", { width: 260, height: 260, "aria-hidden": "true" });
        this.paint();
        this.place.replaceChildren(this.canvas, this.drawing);
        if (this.state !== undefined) {
            this.update(this.state);
        }
    }

    /** The place of a chromaticity (x, y) in the drawing. */
    at(point) {
        const [a, b] = this.diagram.of(point);
        return [margin.left + a / this.diagram.width * plot.width, margin.top + (1 - b / this.diagram.height) * plot.height];
    }

    axes() {
        const parts = [];
        for (let i = 0; i * 0.1 <= Math.max(this.diagram.width, this.diagram.height) + 0.001; ++i) {
            const part = i * 0.1;
            const x = margin.left + part / this.diagram.width * plot.width;
            const y = margin.top + (1 - part / this.diagram.height) * plot.height;
            if (part <= this.diagram.width) {
                parts.push(svg("path", { class: "grid", d: `M${x} ${margin.top}V${margin.top + plot.height}` }),
                    svg("text", { class: "tick", x, y: size - 22, "text-anchor": "middle" }, part.toFixed(1)));
            }
            if (part <= this.diagram.height && i > 0) {
                parts.push(svg("path", { class: "grid", d: `M${margin.left} ${y}H${margin.left + plot.width}` }),
                    svg("text", { class: "tick", x: 22, y: y + 4, "text-anchor": "end" }, part.toFixed(1)));
            }
        }
        const [a, b] = this.diagram.axes;
        parts.push(svg("text", { class: "axis", x: margin.left + plot.width, y: size - 6, "text-anchor": "end" }, a),
            svg("text", { class: "axis", x: 34, y: margin.top + 10 }, b));
        return svg("g", { "aria-hidden": "true" }, parts);
    }

    outline() {
        return `M${locus.map((point) => this.at(point).map((each) => each.toFixed(2)).join(" ")).join("L")}Z`;
    }

    horseshoe() {
        const marks = locus.filter(({ wavelength }) => labelled.includes(wavelength)).map((point) => {
            const [x, y] = this.at(point);
            const isAbove = this.kind === "uv" && point.wavelength > 510 && point.wavelength < 700;
            const toTheLeft = point.wavelength <= 510;
            const [right, down] = isAbove ? [0, -8] : [toTheLeft ? -7 : 7, point.wavelength === 520 ? -4 : 4];
            return svg("g", {}, svg("circle", { cx: x, cy: y, r: 2, class: "wavelength" }),
                svg("text", { class: "tick", x: x + right, y: y + down,
                    "text-anchor": isAbove ? "middle" : toTheLeft ? "end" : "start" }, point.wavelength));
        });
        return svg("g", { "aria-hidden": "true" }, svg("path", { id: "locus", class: "locus", d: this.outline() }), marks);
    }

    /** The colours inside the locus, faint: no screen shows most of them. */
    paint() {
        const context = this.canvas.getContext("2d");
        const scale = this.canvas.width / size;
        context.scale(scale, scale);
        context.clip(new Path2D(this.outline()));
        for (let x = margin.left; x < size; x += 4) {
            for (let y = margin.top; y < size - margin.bottom; y += 4) {
                const a = (x + 2 - margin.left) / plot.width * this.diagram.width;
                const b = (1 - (y + 2 - margin.top) / plot.height) * this.diagram.height;
                const point = this.diagram.back(a, b);
                if (point.y > 0.001 && point.x + point.y < 1.02) {
                    context.fillStyle = `rgb(${shownColour(point).join(" ")})`;
                    context.fillRect(x, y, 4.5, 4.5);
                }
            }
        }
    }

    update(state) {
        this.state = state;
        const wanted = JSON.stringify(Object.entries(state.settings).filter(([name]) => /^preset|^active_color/.test(name)));
        if (wanted === this.drawn) {
            return;
        }
        this.drawn = wanted;
        const focused = document.activeElement?.getAttribute?.("data-preset");
        const numbers = Array.from({ length: state.model.presets }, (_, i) => i + 1);
        numbers.sort((a, b) => (a === state.presetNumber) - (b === state.presetNumber)); // the active one above all others
        this.presets.replaceChildren(...numbers.map((number) => this.preset(state, number)));
        if (focused) {
            this.presets.querySelector(`[data-preset="${focused}"]`)?.focus();
        }
        this.legend.replaceChildren(...colours.map((_, i) => html("li", { class: i + 1 === state.presetNumber ? "active" : "" },
            this.swatch(i + 1), state.preset("name", i + 1))));
        this.showValues(state.presetNumber);
    }

    swatch(number) {
        const swatch = html("span", { class: "swatch" });
        swatch.style.background = colours[number - 1];
        return swatch;
    }

    preset(state, number) {
        const point = (corner) => ({ x: Number(state.preset(`${corner}_x`, number)), y: Number(state.preset(`${corner}_y`, number)) });
        const places = corners.map((corner) => this.at(point(corner)));
        const [whiteX, whiteY] = this.at(point("white"));
        const isActive = number === state.presetNumber;
        const show = () => this.showValues(number);
        return svg("g", { class: isActive ? "preset active" : "preset", tabindex: 0, role: "img", "data-preset": number,
            stroke: colours[number - 1], fill: colours[number - 1],
            "aria-label": `${state.preset("name", number)}${isActive ? ", active" : ""}. ${this.inWords(state, number)}`,
            onmouseenter: show, onfocus: show,
            onmouseleave: () => this.showValues(this.state.presetNumber), onblur: () => this.showValues(this.state.presetNumber) },
        svg("path", { class: "triangle", d: `M${places.map((each) => each.join(" ")).join("L")}Z` }),
        places.map(([cx, cy]) => svg("circle", { class: "corner", cx, cy, r: isActive ? 5 : 3.5 })),
        svg("path", { class: "white", d: `M${whiteX - 6} ${whiteY}h12M${whiteX} ${whiteY - 6}v12` }));
    }

    inWords(state, number) {
        return [...corners, "white"].map((corner) => {
            const [a, b] = this.diagram.fields.map((each) => state.preset(`${corner}_${each}`, number));
            return `${corner} ${a}, ${b}`;
        }).join("; ");
    }

    showValues(number) {
        const state = this.state;
        const cells = [...corners, "white"].map((corner) => html("tr", {}, html("th", { scope: "row" }, corner),
            ["x", "y", "u", "v"].map((field) => html("td", { "data-value": `${corner}_${field}` }, state.preset(`${corner}_${field}`, number)))));
        const title = `${state.preset("name", number)}${number === state.presetNumber ? " (active)" : ""}`;
        this.values.replaceChildren(html("table", { "data-preset": number },
            html("caption", {}, this.swatch(number), title, html("span", {}, `${state.preset("luminance", number)} cd/m², gamma ${state.preset("gamma", number)}`)),
            html("thead", {}, html("tr", {}, html("td", {}), ["x", "y", "u′", "v′"].map((each) => html("th", { scope: "col" }, each)))),
            html("tbody", {}, cells)));
        for (const each of this.presets.children) {
            each.classList.toggle("looked-at", Number(each.dataset.preset) === number);
        }
        put(this.drawing, { "data-shown": number });
    }
}
