// The changes of one file, unified or side by side.
import { hunkLines } from "./diff-lines.js";
import { element, visible } from "./elements.js";
import { lazyLines } from "./lines.js";
import { textOf } from "./route.js";
import { compareLines, pairLines } from "./words.js";

/** Returns an element with the changes of a record of type 1004. */
export function diffElement(file, { split, label }) {
    const hunks = file.hunks ?? [];
    if (hunks.length === 0) return element("p.remark", {}, emptyRemark(file));
    return split ? splitElement(hunks, label) : unifiedElement(hunks, label);
}

function emptyRemark(file) {
    if (file.remark) return file.remark;
    if (file.isBinary) return "A binary file.";
    if (file.oldMode && file.newMode && file.oldMode !== file.newMode) {
        return `Only the mode changed, from ${file.oldMode} to ${file.newMode}.`;
    }
    return "No line changed.";
}

/** Remembers for each line its partner, with which its words are compared. */
function pair(lines) {
    const rows = pairLines(lines);
    for (const row of rows) if (row.old && row.new && row.old !== row.new) row.old.partner = row.new, row.new.partner = row.old;
    return rows;
}

function spansOf(line) {
    if (!line.partner) return null;
    if (line.spans === undefined) {
        const [old, fresh] = line.kind === "-" ? [line, line.partner] : [line.partner, line];
        const compared = compareLines(old.text, fresh.text);
        old.spans = compared?.old ?? null;
        fresh.spans = compared?.new ?? null;
    }
    return line.spans;
}

function heading(hunk) {
    const range = (start, count) => count === 1 ? start : `${start},${count}`;
    return `@@ -${range(hunk.oldStart, hunk.oldCount)} +${range(hunk.newStart, hunk.newCount)} @@ `
        + visible(hunk.heading === undefined ? "" : textOf(hunk.heading));
}

function code(line) {
    const spans = spansOf(line);
    const text = spans
        ? spans.map(([part, changed]) => changed ? element("mark", {}, visible(part)) : visible(part)) : visible(line.text);
    const end = line.lacksLineEnd ? element("span.no-end", { title: "No line end at the end of the file" }, " ⊘") : null;
    return element("span.code", {}, text, end);
}

const kindClass = { "+": "added", "-": "removed", " ": "same" };

function lineOf(line, numbers) {
    return element(`div.line.${kindClass[line.kind] ?? "same"}`, {},
        numbers.map((number) => element("span.number", {}, number === null ? "" : String(number))),
        element("span.sign", {}, line.kind), code(line));
}

function scrolling(tag, label, lines) {
    return element(tag, { tabindex: "0", role: "group", "aria-label": label }, lines);
}

function unifiedElement(hunks, label) {
    const rows = hunks.flatMap((hunk) => {
        const lines = hunkLines(hunk);
        pair(lines);
        return [{ heading: heading(hunk) }, ...lines];
    });
    const make = (index) => rows[index].heading !== undefined
        ? element("div.line.hunk", {}, rows[index].heading) : lineOf(rows[index], [rows[index].old, rows[index].new]);
    return scrolling("div.diff.unified", label, lazyLines(rows.length, make));
}

function splitElement(hunks, label) {
    const rows = hunks.flatMap((hunk) => [{ heading: heading(hunk) }, ...pair(hunkLines(hunk))]);
    const side = (key) => lazyLines(rows.length, (index) => {
        const row = rows[index];
        if (row.heading !== undefined) return element("div.line.hunk", {}, key === "old" ? row.heading : "\u00a0");
        return row[key] ? lineOf(row[key], [row[key][key]]) : element("div.line.gap", {}, "\u00a0");
    });
    return element("div.diff.split", {},
        scrolling("div.side", `${label}, before`, side("old")), scrolling("div.side", `${label}, after`, side("new")));
}
