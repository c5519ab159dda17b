// SPDX-License-Identifier: Apache-2.0
// Where a picture stands on the panel, and which part of its source is seen there. All in pixels.

export const panel = { width: 2560, height: 1440 };

const overscanPart = 0.05; // of each side

/** What a DCI region leaves of a picture of 4096 pixels (or 4095): 1.85:1 cuts at both sides, 2.39:1 above and below. */
function regionOf(source, region) {
    const isDci = source.width >= 4095 && source.height === 2160;
    if (isDci && region === 1) {
        return { x: 50, y: 0, width: source.width - 100, height: source.height };
    }
    if (isDci && region === 2) {
        return { x: 0, y: 222, width: source.width, height: source.height - 444 };
    }
    return { x: 0, y: 0, width: source.width, height: source.height };
}

/** The largest place of a shape in the middle of another. */
function inside(place, shape) {
    const scale = Math.min(place.width / shape.width, place.height / shape.height);
    const [width, height] = [shape.width * scale, shape.height * scale];
    return { x: place.x + (place.width - width) / 2, y: place.y + (place.height - height) / 2, width, height };
}

function cut(seen, part) {
    return {
        x: seen.x + seen.width * part, y: seen.y + seen.height * part,
        width: seen.width * (1 - 2 * part), height: seen.height * (1 - 2 * part),
    };
}

/** A part of the source of the place's shape, so that it fills the place. */
function filling(seen, place) {
    const shape = inside(seen, place);
    return { x: shape.x, y: shape.y, width: shape.width, height: shape.height };
}

/** Source pixels as panel pixels: a window on the larger picture, or the whole of a smaller one in the middle. */
function pixelForPixel(source, place, corner) {
    const width = Math.min(source.width, place.width);
    const height = Math.min(source.height, place.height);
    return {
        seen: {
            x: Math.min(corner.x, source.width - width), y: Math.min(corner.y, source.height - height), width, height,
        },
        place: { x: place.x + (place.width - width) / 2, y: place.y + (place.height - height) / 2, width, height },
    };
}

/** Where a picture is drawn (place), which part of the source is seen (seen), and what of the source is its region. */
export function arrange({ source, place, aspect, region, overscan, corner }) {
    const kept = regionOf(source, region);
    const whole = { x: 0, y: 0, width: source.width, height: source.height };
    if (aspect === 4) {
        return { ...pixelForPixel(source, place, corner), kept };
    }
    let seen = overscan ? cut(whole, overscanPart) : whole;
    let shown = place;
    if (aspect === 0) {
        shown = inside(place, seen);
    } else if (aspect === 1) {
        seen = filling(seen, place);
    } else if (aspect === 3) {
        shown = inside(place, { width: 4, height: 3 });
    }
    return { place: shown, seen, kept };
}
