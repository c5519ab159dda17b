// SPDX-License-Identifier: Apache-2.0
// What the numbers of settings are called here. Where the monitor's own papers give no meaning, it is this desk's choice.

export const inputs = ["Display Port 1", "Display Port 2", "HDMI"];
export const images = ["Bars", "Chart", "Ramps"];
export const aspects = ["As the source", "Fill", "Stretch", "4:3", "Pixel for pixel"];
export const regions = ["Whole picture", "1.85:1", "2.39:1"];
export const scalings = ["Scaling 0", "Scaling 1", "Scaling 2", "Scaling 3"];
export const pipModes = ["Off", "In the picture", "Beside the picture"];
export const pipSizes = ["Maximum", "Minimum", "Default"];
export const pipPositions = ["Upper left", "Upper right", "Lower right", "Lower left", "Free"];
export const patterns = ["Full field", "Horizontal ramp", "Vertical ramp", "Steps", "Bars", "Chequers", "Grid", "Window",
    "Geometry"];
export const rotations = ["Upright", "Turned by 90°"];
export const lights = ["White", "Amber", "Blue"];
export const lightColours = ["#f4f4f0", "#ffb43c", "#5aa9ff"];

/** The state as the page uses it: settings by name, and what follows from several. */
export class State {
    constructor(told, model) {
        this.settings = told.settings;
        this.faults = told.faults;
        this.engine = told.engine;
        this.model = model;
    }

    get(name) {
        return this.settings[name];
    }

    get isOn() {
        return this.get("soft_power_state") !== 0;
    }

    get presetNumber() {
        return this.get("active_color_space") + 1;
    }

    /** A value of a preset, the active one unless another is named. */
    preset(field, number = this.presetNumber) {
        return this.get(`preset${number}.${field}`);
    }

    get luminance() {
        return this.preset("luminance");
    }

    /** Of an input, counted from 0. */
    input(number) {
        return {
            number,
            name: inputs[number],
            isActive: this.get(`input${number + 1}.active`) !== 0,
            width: this.get(`input${number + 1}.width`),
            height: this.get(`input${number + 1}.height`),
        };
    }

    get mainInput() {
        return this.input(this.get("video_input"));
    }

    get pipInput() {
        return this.input(this.get("pip_source"));
    }

    get isRecalibrationDue() {
        return this.get("calibration_notification") !== 0 &&
            this.get("last_calibration") >= this.get("recalibration_alarm");
    }
}
