// The lines of a diff. Pure functions.
import { textOf } from "./route.js";
import { pairLines } from "./words.js";

/** Returns the lines of a hunk as {kind, text, old, new}: the numbers are null in the file that lacks the line. */
export function hunkLines(hunk) {
    let [oldNumber, newNumber] = [hunk.oldStart, hunk.newStart];
    const lines = [];
    for (const raw of hunk.lines) {
        const text = textOf(raw);
        const kind = text[0];
        if (kind === "\\") {
            if (lines.length) lines[lines.length - 1].lacksLineEnd = true;
            continue;
        }
        lines.push({
            kind, text: text.slice(1), old: kind === "+" ? null : oldNumber++, new: kind === "-" ? null : newNumber++,
        });
    }
    return lines;
}

/** Returns the line of the older file that became the line, or the one nearest to it. Lines count from 1. */
export function lineBefore(hunks, line) {
    let shift = 0;
    for (const hunk of hunks) {
        if (line < hunk.newStart || (hunk.newCount === 0 && line === hunk.newStart)) break;
        if (line < hunk.newStart + hunk.newCount) {
            const rows = pairLines(hunkLines(hunk));
            const row = rows.findIndex((pair) => pair.new?.new === line);
            const earlier = rows.slice(0, row + 1).reverse().find((pair) => pair.old);
            return Math.max(1, earlier ? earlier.old.old : hunk.oldStart);
        }
        // A range without lines names the line before it.
        const oldEnd = hunk.oldStart + (hunk.oldCount || 1);
        const newEnd = hunk.newStart + (hunk.newCount || 1);
        shift = oldEnd - newEnd;
    }
    return Math.max(1, line + shift);
}
