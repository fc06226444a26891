// Requests and records of nebsc with short names: "path" instead of "NEBSourceControlOperationPathKey".
import { nameOf, textOf } from "./route.js";

export const Type = {
    state: 1000, history: 1001, content: 1002, annotation: 1003, changes: 1004, references: 1008, operation: 1010,
    tree: 1019,
};

const short = new Map();

function shortKey(key) {
    let name = short.get(key);
    if (name === undefined) {
        name = key.replace(/^NEBSourceControlOperation/, "").replace(/Key$/, "");
        name = name.replace(/^[A-Z]+(?=[A-Z][a-z]|$)|^[A-Z]/, (start) => start.toLowerCase());
        short.set(key, name);
    }
    return name;
}

/** Returns the record, and those inside it, with short keys. */
export function record(value) {
    if (Array.isArray(value)) return value.map(record);
    if (value === null || typeof value !== "object" || "base64" in value) return value;
    return Object.fromEntries(Object.entries(value).map(([key, inner]) => [shortKey(key), record(inner)]));
}

/** Returns a request: of the type, with members, and options under their short names. */
export function request(type, members = {}, options = {}) {
    const given = Object.entries(options).filter(([, value]) => value !== undefined && value !== "" && value !== false);
    return {
        type, ...members,
        options: Object.fromEntries(given.map(([key, value]) => [`NEBSourceControlRequestOption${key}`, value])),
    };
}

/** Returns the name under the key of a short record: a string, or {base64} if it is not UTF-8. */
export function nameIn(entry, key) {
    return entry[`${key}Bytes`] ?? entry[key];
}

/** Returns the content of a file in a short record as bytes. */
export function contentBytes(entry) {
    if (entry.contentBytes) return Uint8Array.from(atob(entry.contentBytes.base64), (c) => c.charCodeAt(0));
    return new TextEncoder().encode(entry.content ?? "");
}

/** Returns the folder of a path and the path's last part, both as names. */
export function splitPath(path) {
    const text = typeof path === "string" ? path : atob(path.base64);
    const slash = text.lastIndexOf("/");
    const part = (value) => typeof path === "string" ? value : nameOf(Uint8Array.from(value, (c) => c.charCodeAt(0)));
    return { folder: slash < 0 ? "" : part(text.slice(0, slash)), last: part(text.slice(slash + 1)) };
}

/** Whether the reference names the main branch of a remote, which has a name of its own. */
export function isRemoteHead(fullName) {
    return /^refs\/remotes\/[^/]+\/HEAD$/.test(textOf(fullName));
}

/** The name of a reference without "refs/heads/" and the like, and its kind: branch, remote, tag or other. */
export function shortReference(fullName) {
    const name = textOf(fullName);
    for (const [prefix, kind] of [["refs/heads/", "branch"], ["refs/remotes/", "remote"], ["refs/tags/", "tag"]]) {
        if (name.startsWith(prefix)) return { name: name.slice(prefix.length), kind };
    }
    return { name: name.replace(/^refs\//, ""), kind: "other" };
}
