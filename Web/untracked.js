// The content of files of the working copy that git does not provide: untracked files, and images.
import { nameIn } from "./records.js";
import { encodeName } from "./route.js";

const BINARY_BYTES = 8000;

/** Returns the bytes of a file of the working copy; throws an Error with a sentence. */
export async function workingCopyBytes(path) {
    const response = await fetch(`/untracked?path=${encodeName(path)}`);
    if (!response.ok) throw new Error((await response.json()).error);
    return new Uint8Array(await response.arrayBuffer());
}

/** Returns records like those of type 1004 for untracked files: all lines are added. */
export function loadUntracked(files) {
    return Promise.all(files.map(async (file) => {
        const path = nameIn(file, "path");
        const names = { path: file.path, pathBytes: file.pathBytes };
        if (file.path.endsWith("/")) return { ...names, remark: "A folder with a repository of its own." };
        try {
            return { ...names, ...addedLines(await workingCopyBytes(path)) };
        } catch (error) {
            return { ...names, remark: error.message };
        }
    }));
}

/** Returns the members of a record for a file with these bytes. */
export function addedLines(bytes) {
    if (bytes.subarray(0, BINARY_BYTES).includes(0)) return { isBinary: true };
    if (bytes.length === 0) return { remark: "The file is empty." };
    const lines = new TextDecoder("utf-8", { ignoreBOM: true }).decode(bytes).split("\n");
    const isWhole = lines[lines.length - 1] === "";
    if (isWhole) lines.pop();
    const marked = lines.map((line) => `+${line}`);
    if (!isWhole) marked.push("\\ No newline at end of file");
    return { hunks: [{ oldStart: 0, oldCount: 0, newStart: 1, newCount: lines.length, lines: marked }] };
}
