// SPDX-License-Identifier: Apache-2.0
// The test patterns 0 to 8, drawn for the whole panel in a colour of three levels from 0 to 255.
import { svg } from "./svg.js";

const width = 2560;
const height = 1440;

function shade([red, green, blue], part) {
    return `rgb(${Math.round(red * part)} ${Math.round(green * part)} ${Math.round(blue * part)})`;
}

function field(levels) {
    return [svg("rect", { width, height, fill: shade(levels, 1) })];
}

function ramp(levels, turn) {
    const ends = turn ? { x1: 0, y1: 1, x2: 0, y2: 0 } : {};
    return [
        svg("linearGradient", { id: "pattern-ramp", ...ends },
            svg("stop", { offset: 0, "stop-color": "black" }), svg("stop", { offset: 1, "stop-color": shade(levels, 1) })),
        svg("rect", { width, height, fill: "url(#pattern-ramp)" }),
    ];
}

function columns(colours) {
    const step = width / colours.length;
    return colours.map((fill, i) => svg("rect", { x: i * step, width: step + 0.5, height, fill }));
}

function steps(levels) {
    return columns(Array.from({ length: 11 }, (_, i) => shade(levels, i / 10)));
}

function bars([red, green, blue]) {
    const parts = [[1, 1, 1], [1, 1, 0], [0, 1, 1], [0, 1, 0], [1, 0, 1], [1, 0, 0], [0, 0, 1], [0, 0, 0]];
    return columns(parts.map(([r, g, b]) => shade([r * red, g * green, b * blue], 1)));
}

function chequers(levels) {
    const drawing = [svg("rect", { width, height, fill: "black" })];
    for (let i = 0; i < 16 * 9; ++i) {
        const [column, row] = [i % 16, Math.floor(i / 16)];
        if ((column + row) % 2 === 0) {
            drawing.push(svg("rect", { x: column * 160, y: row * 160, width: 160, height: 160, fill: shade(levels, 1) }));
        }
    }
    return drawing;
}

function lines(levels) {
    const drawing = [svg("rect", { width, height, fill: "black" })];
    for (let x = 0; x <= width; x += 160) {
        drawing.push(svg("rect", { x: x - 3, width: 6, height, fill: shade(levels, 1) }));
    }
    for (let y = 0; y <= height; y += 160) {
        drawing.push(svg("rect", { y: y - 3, width, height: 6, fill: shade(levels, 1) }));
    }
    return drawing;
}

function windowed(levels) {
    return [
        svg("rect", { width, height, fill: "black" }),
        svg("rect", { x: width / 3, y: height / 3, width: width / 3, height: height / 3, fill: shade(levels, 1) }),
    ];
}

function geometry(levels) {
    const stroke = { fill: "none", stroke: shade(levels, 1), "stroke-width": 6 };
    const circle = (cx, cy, r) => svg("circle", { cx, cy, r, ...stroke });
    return [
        svg("rect", { width, height, fill: "black" }),
        circle(width / 2, height / 2, 690), circle(width / 2, height / 2, 230),
        ...[[260, 260], [2300, 260], [260, 1180], [2300, 1180]].map(([x, y]) => circle(x, y, 200)),
        svg("path", { d: `M0 ${height / 2}H${width}M${width / 2} 0V${height}M3 3H${width - 3}V${height - 3}H3Z`, ...stroke }),
    ];
}

const drawings = [field, (l) => ramp(l, false), (l) => ramp(l, true), steps, bars, chequers, lines, windowed, geometry];

export function pattern(number, levels) {
    return drawings[number](levels);
}
