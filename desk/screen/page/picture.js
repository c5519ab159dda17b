// SPDX-License-Identifier: Apache-2.0
// The picture on the panel, as the settings make it.
import { arrange, panel } from "./geometry.js";
import { image, imageHeight } from "./images.js";
import { Menu } from "./menu.js";
import { aspects, images, patterns, pipModes } from "./names.js";
import { pattern } from "./patterns.js";
import { put, putText, svg } from "./svg.js";

const wholePanel = { x: 0, y: 0, ...panel };
const highestLuminance = 250;

/** How light looks beside the brightest: the eye does not see it in proportion, and gets used to the dark. */
function lightness(luminance) {
    return (luminance / highestLuminance) ** 0.35;
}

/** One picture, the first or the second. */
class Layer {
    constructor(name) {
        this.picture = svg("g", {});
        this.mask = svg("path", { class: "cropped", "fill-rule": "evenodd", fill: "#000" });
        this.frame = svg("svg", { preserveAspectRatio: "none" }, this.picture, this.mask);
        this.noSignal = svg("text", { class: "no-signal", "text-anchor": "middle" }, "No signal");
        this.group = svg("g", { id: name }, svg("rect", { class: "ground", fill: "#000" }), this.frame, this.noSignal);
        this.ground = this.group.firstChild;
        this.drawn = "";
    }

    /** settings: source, place, aspect, region, overscan, corner, crop (shown: whether the cut part is, opacity), levels. */
    update(settings) {
        const { source, place } = settings;
        const arranged = arrange(settings);
        put(this.ground, place);
        put(this.frame, arranged.place);
        put(this.group, {
            "data-input": source.number + 1, "data-signal": source.isActive ? "on" : "none",
            "data-seen": ["x", "y", "width", "height"].map((each) => Math.round(arranged.seen[each])).join(" "),
            filter: settings.levels ? "url(#video-levels)" : "none",
        });
        put(this.noSignal, {
            x: place.x + place.width / 2, y: place.y + place.height / 2, "font-size": Math.max(28, place.height / 16),
            visibility: source.isActive ? "hidden" : "visible",
        });
        put(this.frame, { visibility: source.isActive && source.width > 0 && source.height > 0 ? "visible" : "hidden" });
        const scale = imageHeight / Math.max(1, source.height);
        const { seen, kept } = arranged;
        put(this.frame, { viewBox: `${seen.x * scale} ${seen.y * scale} ${seen.width * scale} ${seen.height * scale}` });
        const wanted = `${source.number} ${source.width} ${source.height}`;
        if (this.drawn !== wanted) {
            this.drawn = wanted;
            this.picture.replaceChildren(image(source));
        }
        const all = `M0 0H${source.width * scale}V${imageHeight}H0Z`;
        const rest = `M${kept.x * scale} ${kept.y * scale}h${kept.width * scale}v${kept.height * scale}h${-kept.width * scale}Z`;
        const isWhole = kept.width === source.width && kept.height === source.height;
        put(this.mask, {
            d: all + rest, visibility: isWhole ? "hidden" : "inherit",
            "fill-opacity": settings.crop.isShown ? settings.crop.opacity / 100 : 1,
        });
        return arranged;
    }
}

/** Where the window of 2560 x 1440 lies on a larger picture. */
class Locator {
    constructor() {
        this.whole = svg("rect", { class: "locator-whole" });
        this.window = svg("rect", { class: "locator-window" });
        this.group = svg("g", { id: "region", transform: "translate(80 1220)" }, this.whole, this.window);
    }

    update(source, seen, isShown) {
        put(this.group, { visibility: isShown ? "visible" : "hidden", "data-x": seen.x, "data-y": seen.y });
        const scale = 240 / source.width;
        put(this.whole, { width: 240, height: source.height * scale });
        put(this.window, { x: seen.x * scale, y: seen.y * scale, width: seen.width * scale, height: seen.height * scale });
    }
}

function filters() {
    const linear = (name) => svg(name, { type: "linear", slope: 255 / 219, intercept: -16 / 219 });
    return svg("defs", {},
        svg("filter", { id: "video-levels", "color-interpolation-filters": "sRGB", x: 0, y: 0, width: 1, height: 1 },
            svg("feComponentTransfer", {}, linear("feFuncR"), linear("feFuncG"), linear("feFuncB"))),
        svg("filter", { id: "blue-only", "color-interpolation-filters": "sRGB", x: 0, y: 0, width: 1, height: 1 },
            svg("feColorMatrix", { values: "0 0 0 0 0  0 0 0 0 0  0 0 1 0 0  0 0 0 1 0" })),
        svg("clipPath", { id: "panel-edge" }, svg("rect", panel)));
}

export class Picture {
    constructor(place, halo) {
        this.halo = halo;
        this.first = new Layer("first-picture");
        this.second = new Layer("second-picture");
        this.edge = svg("rect", { class: "second-edge", fill: "none" });
        this.locator = new Locator();
        this.pattern = svg("g", { id: "pattern" });
        this.dark = svg("rect", { ...panel, fill: "#000", id: "dark" });
        this.menu = new Menu();
        this.pictures = svg("g", { id: "pictures" }, this.first.group, this.second.group, this.edge);
        this.drawing = svg("svg", { viewBox: `0 0 ${panel.width} ${panel.height}`, role: "img", id: "picture" }, filters(),
            svg("rect", { ...panel, fill: "#000" }),
            svg("g", { "clip-path": "url(#panel-edge)" }, this.pictures, this.pattern, this.locator.group, this.dark,
                this.menu.group));
        place.replaceChildren(this.drawing);
    }

    update(state) {
        const arranged = this.updateFirst(state);
        this.updateSecond(state);
        const main = state.mainInput;
        const hasRegion = state.get("display_aspect_ratio") === 4 && main.isActive &&
            (main.width > panel.width || main.height > panel.height);
        const hasPattern = state.get("test_pattern_enabled") !== 0;
        this.locator.update(main, arranged.seen, hasRegion && !hasPattern && state.isOn);
        this.updatePattern(state, hasPattern);
        put(this.pictures, { filter: state.get("show_blue_channel") ? "url(#blue-only)" : "none" });

        const light = state.isOn ? lightness(state.luminance) : 0;
        put(this.dark, { "fill-opacity": (1 - light).toFixed(3) });
        put(this.drawing, { "data-power": state.isOn ? "on" : "standby", "aria-label": this.describe(state, hasPattern) });
        this.halo.style.setProperty("--light", light.toFixed(3));
        this.menu.update(state);
    }

    updateFirst(state) {
        const isBeside = state.get("pip_mode") === 2;
        return this.first.update({
            source: state.mainInput,
            place: isBeside ? { ...wholePanel, width: panel.width / 2 } : wholePanel,
            aspect: isBeside ? 0 : state.get("display_aspect_ratio"),
            region: state.get("dci_image_region"),
            overscan: state.get("overscan") !== 0,
            levels: state.get("use_video_levels") !== 0,
            corner: { x: state.get("scroll_4k_position_x"), y: state.get("scroll_4k_position_y") },
            crop: { isShown: state.get("show_cropped_region") !== 0, opacity: state.get("cropped_region_opacity") },
        });
    }

    updateSecond(state) {
        const mode = state.get("pip_mode");
        const place = mode === 2 ? { ...wholePanel, x: panel.width / 2, width: panel.width / 2 } : {
            x: state.get("pip_position_x"), y: state.get("pip_position_y"),
            width: state.get("pip_width"), height: state.get("pip_height"),
        };
        this.second.update({
            source: state.pipInput, place, aspect: 0,
            region: state.get("pip_dci_image_region"),
            overscan: state.get("pip_overscan") !== 0,
            levels: state.get("pip_video_levels") !== 0,
            corner: { x: 0, y: 0 },
            crop: { isShown: state.get("pip_show_cropped_region") !== 0, opacity: state.get("cropped_region_opacity") },
        });
        put(this.second.group, { display: mode === 0 ? "none" : "inline", "data-mode": mode });
        put(this.edge, { ...place, display: mode === 1 ? "inline" : "none" });
    }

    updatePattern(state, hasPattern) {
        const levels = ["red", "green", "blue"].map((each) => state.get(`test_pattern_${each}`));
        const wanted = hasPattern ? `${state.get("test_pattern")} ${levels.join(" ")}` : "";
        if (wanted !== this.drawnPattern) {
            this.drawnPattern = wanted;
            put(this.pattern, { "data-pattern": wanted });
            this.pattern.replaceChildren(...hasPattern ? pattern(state.get("test_pattern"), levels) : []);
        }
    }

    describe(state, hasPattern) {
        if (!state.isOn) {
            return "The monitor's picture: dark, as it is in standby.";
        }
        const { name, number, isActive } = state.mainInput;
        const source = isActive ? `${name}, test image ${images[number]}` : `${name}, no signal`;
        const shown = hasPattern ? `test pattern ${patterns[state.get("test_pattern")]}` : source;
        const mode = state.get("pip_mode");
        const second = mode === 0 || hasPattern ? "" :
            `; ${pipModes[mode].toLowerCase()} ${state.pipInput.name}, test image ${images[state.pipInput.number]}`;
        return `The monitor's picture: ${shown}${second}; ${aspects[state.get("display_aspect_ratio")].toLowerCase()}, ` +
            `${state.luminance} candela per square metre.`;
    }
}

/** What stands below the picture, in words. */
export function facts(state) {
    const main = state.mainInput;
    const mode = state.get("pip_mode");
    const isPixels = state.get("display_aspect_ratio") === 4;
    const corner = `from ${state.get("scroll_4k_position_x")}, ${state.get("scroll_4k_position_y")}`;
    return [
        ["power", "Power", state.isOn ? "On" : "Standby"],
        ["input", "Input", `${main.name}${main.isActive ? `, ${main.width} × ${main.height}` : ", no signal"}`],
        ["preset", "Preset", `${state.preset("name")}, gamma ${state.preset("gamma")}`],
        ["luminance", "Luminance", `${state.luminance} cd/m²`],
        ["aspect", "Aspect", aspects[state.get("display_aspect_ratio")] + (isPixels ? `, ${corner}` : "")],
        ["second", "Second picture", mode === 0 ? "Off" : `${pipModes[mode]}, ${state.pipInput.name}`],
        ["pattern", "Test pattern", state.get("test_pattern_enabled") ? patterns[state.get("test_pattern")] : "Off"],
        ["calibration", "Calibrated", `${state.get("last_calibration")} h ago${state.isRecalibrationDue ? ", due" : ""}`],
    ];
}

/** Writes the facts into a list of definitions. */
export function showFacts(list, state, html) {
    const entries = facts(state);
    if (list.children.length === 0) {
        list.append(...entries.map(([key, name]) => html("div", { "data-fact": key }, html("dt", {}, name), html("dd", {}))));
    }
    entries.forEach(([, , value], i) => putText(list.children[i].lastChild, value));
}
