// Addresses of the views: "#/view/segment/segment?name=value".
//
// A segment holds the bytes of a name, percent-encoded. A name is a string, or {base64} if its bytes are not UTF-8,
// as in the requests of nebsc.

const unreserved = /[A-Za-z0-9_.~-]/;

/** Returns the bytes of a name. */
export function bytesOf(name) {
    if (typeof name === "string") return new TextEncoder().encode(name);
    return Uint8Array.from(atob(name.base64), (character) => character.charCodeAt(0));
}

/** Returns the name with these bytes. */
export function nameOf(bytes) {
    try {
        return new TextDecoder("utf-8", { fatal: true, ignoreBOM: true }).decode(bytes);
    } catch {
        return { base64: btoa(String.fromCharCode(...bytes)) };
    }
}

/** Returns the text of a name, with U+FFFD for bytes that are not UTF-8. */
export function textOf(name) {
    return typeof name === "string" ? name : new TextDecoder("utf-8", { ignoreBOM: true }).decode(bytesOf(name));
}

/** Percent-encodes a name for one segment or value. */
export function encodeName(name) {
    let text = "";
    for (const byte of bytesOf(name)) {
        const character = String.fromCharCode(byte);
        text += unreserved.test(character) ? character : `%${byte.toString(16).toUpperCase().padStart(2, "0")}`;
    }
    return text;
}

/** Decodes what encodeName() returned. A "%" without two digits stands for itself. */
export function decodeName(text) {
    const bytes = [];
    for (const part of text.match(/%[0-9A-Fa-f]{2}|[^]/gu) ?? []) {
        if (part.length === 3 && part[0] === "%") bytes.push(parseInt(part.slice(1), 16));
        else bytes.push(...new TextEncoder().encode(part));
    }
    return nameOf(Uint8Array.from(bytes));
}

/**
 * Returns the address of a view.
 * @param {string} view the name of the view
 * @param {Array} segments names
 * @param {Object} values names by key; a value that is undefined, null, false or "" is left out
 */
export function address(view, segments = [], values = {}) {
    const query = Object.entries(values)
        .filter(([, value]) => value !== undefined && value !== null && value !== false && value !== "")
        .map(([key, value]) => `${key}=${encodeName(typeof value === "object" ? value : String(value))}`);
    return `#/${[view, ...segments.map(encodeName)].join("/")}${query.length ? `?${query.join("&")}` : ""}`;
}

/** Returns {view, segments, values} of an address; the view is "" if it names none. */
export function parse(hash) {
    const text = hash.replace(/^#?\/?/, "");
    const mark = text.indexOf("?");
    const [view, ...segments] = (mark < 0 ? text : text.slice(0, mark)).split("/");
    const values = {};
    for (const pair of mark < 0 ? [] : text.slice(mark + 1).split("&")) {
        const equals = pair.indexOf("=");
        if (equals > 0) values[pair.slice(0, equals)] = decodeName(pair.slice(equals + 1));
    }
    return { view, segments: segments.map(decodeName), values };
}
