// SPDX-License-Identifier: Apache-2.0
// Elements of SVG and HTML, made from what they are.

const namespace = "http://www.w3.org/2000/svg";

function filled(element, attributes, children) {
    for (const [name, value] of Object.entries(attributes ?? {})) {
        if (name.startsWith("on")) {
            element.addEventListener(name.slice(2), value);
        } else if (value === true) {
            element.setAttribute(name, "");
        } else if (value !== undefined && value !== false && value !== null) {
            element.setAttribute(name, value);
        }
    }
    element.append(...children.flat().filter((each) => each !== undefined && each !== null));
    return element;
}

/** An SVG element with attributes and children; a function for an attribute that begins with "on" listens. */
export function svg(name, attributes, ...children) {
    return filled(document.createElementNS(namespace, name), attributes, children);
}

/** The same of HTML. */
export function html(name, attributes, ...children) {
    return filled(document.createElement(name), attributes, children);
}

/** Sets attributes where they differ, so that nothing is drawn anew for nothing. */
export function put(element, attributes) {
    for (const [name, value] of Object.entries(attributes)) {
        const text = String(value);
        if (element.getAttribute(name) !== text) {
            element.setAttribute(name, text);
        }
    }
}

export function putText(element, text) {
    if (element.textContent !== text) {
        element.textContent = text;
    }
}
