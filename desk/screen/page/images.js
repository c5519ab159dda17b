// SPDX-License-Identifier: Apache-2.0
// What the inputs bring: a drawn test image each, in video levels (16 to 235), so that the choice of levels shows. An image
// is drawn in units of which 900 are its height.
import { svg } from "./svg.js";

export const imageHeight = 900;

function level(part) {
    return Math.round(16 + 219 * part);
}

function colour(red, green, blue) {
    return `rgb(${level(red)} ${level(green)} ${level(blue)})`;
}

function box(x, y, width, height, fill) {
    return svg("rect", { x, y, width: width + 0.5, height: height + 0.5, fill });
}

let gradients = 0;

/** A gradient through colours at equal distances, and the box that shows it. */
function ramp(x, y, width, height, colours) {
    const id = `ramp${++gradients}`;
    const stops = colours.map((each, i) => svg("stop", { offset: i / (colours.length - 1), "stop-color": each }));
    return svg("g", {}, svg("linearGradient", { id }, stops), box(x, y, width, height, `url(#${id})`));
}

function label(x, y, text, size = 26) {
    return svg("text", { x, y, "font-size": size, fill: colour(0.9, 0.9, 0.9), class: "image-text" }, text);
}

function bars(width, name) {
    const parts = [[1, 1, 1], [1, 1, 0], [0, 1, 1], [0, 1, 0], [1, 0, 1], [1, 0, 0], [0, 0, 1]];
    const step = width / 7;
    const drawing = parts.map(([r, g, b], i) => box(i * step, 0, step, 560, colour(r * 0.75, g * 0.75, b * 0.75)));
    // The same in the other order, with black between, as one looks at them in blue alone.
    const reverse = [...parts].reverse();
    reverse.forEach(([r, g, b], i) => {
        const shown = i % 2 === 0 ? colour(r * 0.75, g * 0.75, b * 0.75) : colour(0, 0, 0);
        drawing.push(box(i * step, 560, step, 70, shown));
    });
    drawing.push(ramp(0, 630, width, 130, [colour(0, 0, 0), colour(1, 1, 1)]));
    drawing.push(box(0, 760, width, 140, colour(0, 0, 0)));
    // Below black, black and a little above it; and the same at white.
    [-0.04, 0, 0.02, 0.04].forEach((part, i) => drawing.push(box(width * 0.42 + i * 42, 790, 42, 80, colour(part, part, part))));
    [0.94, 0.97, 1, 1.06].forEach((part, i) => drawing.push(box(width * 0.75 + i * 42, 790, 42, 80, colour(part, part, part))));
    drawing.push(label(36, 840, name, 28));
    return drawing;
}

// Skin of four kinds, foliage, sky, petals, the primaries and their mixtures; below, seven greys.
const patches = [
    [0.36, 0.24, 0.19], [0.55, 0.39, 0.31], [0.76, 0.58, 0.5], [0.91, 0.76, 0.68], [0.34, 0.42, 0.26], [0.4, 0.5, 0.63],
    [0.86, 0.48, 0.17], [0.29, 0.35, 0.64], [0.77, 0.33, 0.37], [0.37, 0.24, 0.42], [0.63, 0.74, 0.24], [0.9, 0.64, 0.16],
    [0.2, 0.24, 0.58], [0.28, 0.59, 0.29], [0.7, 0.2, 0.22], [0.93, 0.79, 0.12], [0.74, 0.32, 0.58], [0.03, 0.52, 0.63],
];
const greys = [0.95, 0.79, 0.63, 0.48, 0.33, 0.2, 0.08];

function chart(width, name) {
    const drawing = [ramp(0, 0, width, imageHeight, [colour(0.62, 0.66, 0.7), colour(0.5, 0.5, 0.5), colour(0.36, 0.34, 0.32)])];
    const left = width / 2 - 660;
    drawing.push(svg("rect", { x: left - 24, y: 86, width: 1368, height: 728, rx: 14, fill: colour(0.1, 0.1, 0.1) }));
    patches.forEach((parts, i) => {
        const [x, y] = [left + (i % 6) * 222, 110 + Math.floor(i / 6) * 176];
        drawing.push(svg("rect", { x, y, width: 210, height: 164, rx: 4, fill: colour(...parts) }));
    });
    greys.forEach((part, i) => {
        drawing.push(svg("rect", { x: left + i * 190.3, y: 640, width: 178, height: 108, rx: 4, fill: colour(part, part, part) }));
    });
    drawing.push(label(left, 794, name, 28));
    // Lines that grow finer, at both sides.
    for (const [x, turn] of [[60, 1], [width - 60, -1]]) {
        for (let i = 0; i < 24; ++i) {
            const height = 15 - i * 0.55;
            drawing.push(box(turn > 0 ? x - 30 : x - 42, 90 + i * 30, 72, height, i % 2 ? colour(0.9, 0.9, 0.9) : colour(0.05, 0.05, 0.05)));
        }
    }
    drawing.push(svg("circle", { cx: width / 2, cy: 450, r: 440, fill: "none", stroke: colour(0.95, 0.95, 0.95), "stroke-width": 3 }));
    return drawing;
}

function ramps(width, name) {
    const black = colour(0, 0, 0);
    const rows = [[1, 1, 1], [1, 0, 0], [0, 1, 0], [0, 0, 1], [0, 1, 1], [1, 0, 1], [1, 1, 0]];
    const drawing = rows.map((parts, i) => ramp(0, i * 92, width, 92, [black, colour(...parts)]));
    const steps = 16;
    for (let i = 0; i < steps; ++i) {
        const part = i / (steps - 1);
        drawing.push(box(i * width / steps, 644, width / steps, 150, colour(part, part, part)));
    }
    drawing.push(box(0, 794, width, 106, black), label(36, 860, name, 32));
    return drawing;
}

const drawings = [bars, chart, ramps];

/** The image of an input, drawn for its size. */
export function image(input) {
    const width = imageHeight * input.width / input.height;
    return svg("g", {}, drawings[input.number](width, `${input.name}  ${input.width} × ${input.height}`));
}
