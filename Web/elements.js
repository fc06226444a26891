// Elements of the page. All text becomes text nodes; no function takes markup.
import { shortReference } from "./records.js";
import { dateTime } from "./time.js";

const direction = /[\u200e\u200f\u061c\u202a-\u202e\u2066-\u2069]/g;

/**
 * Returns the text with its control characters visible: those of ASCII as control pictures, those that change the
 * direction of text as "[U+202E]". Tabs stay.
 */
export function visible(text) {
    return String(text)
        .replace(/[\x00-\x08\x0a-\x1f]/g, (character) => String.fromCharCode(0x2400 + character.charCodeAt(0)))
        .replace(/\x7f/g, "\u2421")
        .replace(direction, (character) => `[U+${character.charCodeAt(0).toString(16).toUpperCase().padStart(4, "0")}]`);
}

/**
 * Creates an element.
 * @param {string} tag the name, with classes after dots: "span.ref.tag"
 * @param {Object} attributes attributes; a function is the listener of an event; undefined, null and false are left out
 * @param {...(Node|string|null|Array)} children text is added as a text node
 */
export function element(tag, attributes = {}, ...children) {
    const [name, ...classes] = tag.split(".");
    const node = document.createElement(name);
    if (classes.length) node.className = classes.join(" ");
    for (const [key, value] of Object.entries(attributes)) {
        if (typeof value === "function") node.addEventListener(key, value);
        else if (value === true) node.setAttribute(key, "");
        else if (value !== undefined && value !== null && value !== false) node.setAttribute(key, value);
    }
    append(node, children);
    return node;
}

function append(node, children) {
    for (const child of children) {
        if (Array.isArray(child)) append(node, child);
        else if (child !== null && child !== undefined && child !== false) node.append(child);
    }
}

/** Replaces the children of a node. */
export function show(node, ...children) {
    node.replaceChildren();
    append(node, children);
    return node;
}

/** A number with separators, and a noun in singular or plural: "1,234 files". */
export function count(number, noun, plural = `${noun}s`) {
    return `${number.toLocaleString("en")} ${number === 1 ? noun : plural}`;
}

/** A date and, where there is room, the time of day; both in the zone of the offset. */
export function dateElement(seconds, offset) {
    const text = dateTime(seconds, offset);
    const space = text.indexOf(" ");
    return element("time", {}, text.slice(0, space), element("span.clock", {}, text.slice(space)));
}

/** The short name of a reference, coloured by its kind. */
export function referenceElement(fullName) {
    const { name, kind } = shortReference(fullName);
    return element(`span.ref.${kind}`, {}, visible(name));
}
