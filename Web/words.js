// The changes inside a pair of lines. Pure functions.

const MAX_TOKENS = 400;

/** Splits a line into words, runs of spaces, and single other characters. */
export function tokens(line) {
    return line.match(/[\p{L}\p{N}\p{M}_]+|\s+|[^]/gu) ?? [];
}

/**
 * Compares two lines word by word.
 * @returns {{old, new}|null} for each line an array of [text, changed]; null if the lines have too little in common for
 *     marks to help, or are too long
 */
export function compareLines(oldLine, newLine) {
    const before = tokens(oldLine);
    const after = tokens(newLine);
    let start = 0;
    while (start < before.length && start < after.length && before[start] === after[start]) start++;
    let end = 0;
    while (end < before.length - start && end < after.length - start &&
           before[before.length - 1 - end] === after[after.length - 1 - end]) end++;
    const oldMiddle = before.slice(start, before.length - end);
    const newMiddle = after.slice(start, after.length - end);
    if (oldMiddle.length > MAX_TOKENS || newMiddle.length > MAX_TOKENS) return null;
    const [oldKept, newKept] = commonTokens(oldMiddle, newMiddle);
    const flags = (kept, length) => [...Array(start).fill(false), ...kept.map((value) => !value),
                                     ...Array(length - start - kept.length).fill(false)];
    const oldSpans = spans(before, flags(oldKept, before.length));
    const newSpans = spans(after, flags(newKept, after.length));
    return kept(oldSpans) * 3 < oldLine.trim().length && kept(newSpans) * 3 < newLine.trim().length
        ? null : { old: oldSpans, new: newSpans };
}

/** Marks the tokens of a longest common subsequence. */
function commonTokens(before, after) {
    const columns = after.length + 1;
    const lengths = new Uint16Array((before.length + 1) * columns);
    for (let i = before.length - 1; i >= 0; i--) {
        for (let j = after.length - 1; j >= 0; j--) {
            lengths[i * columns + j] = before[i] === after[j]
                ? lengths[(i + 1) * columns + j + 1] + 1
                : Math.max(lengths[(i + 1) * columns + j], lengths[i * columns + j + 1]);
        }
    }
    const oldKept = Array(before.length).fill(false);
    const newKept = Array(after.length).fill(false);
    for (let i = 0, j = 0; i < before.length && j < after.length;) {
        if (before[i] === after[j]) oldKept[i++] = newKept[j++] = true;
        else if (lengths[(i + 1) * columns + j] >= lengths[i * columns + j + 1]) i++;
        else j++;
    }
    return [oldKept, newKept];
}

/** Joins neighbouring tokens with the same flag. */
function spans(words, changed) {
    const result = [];
    words.forEach((word, index) => {
        const last = result[result.length - 1];
        if (last && last[1] === changed[index]) last[0] += word;
        else result.push([word, changed[index]]);
    });
    return result;
}

function kept(list) {
    return list.reduce((sum, [text, changed]) => sum + (changed ? 0 : text.trim().length), 0);
}

/**
 * Pairs the lines of a hunk for two columns.
 * @param {Array<{kind, text}>} lines kind is " ", "-" or "+"
 * @returns {Array<{old, new}>} rows; old or new is null where only the other file has a line
 */
export function pairLines(lines) {
    const rows = [];
    for (let index = 0; index < lines.length;) {
        if (lines[index].kind === " ") {
            rows.push({ old: lines[index], new: lines[index] });
            index++;
            continue;
        }
        const removed = [];
        const added = [];
        while (index < lines.length && lines[index].kind === "-") removed.push(lines[index++]);
        while (index < lines.length && lines[index].kind === "+") added.push(lines[index++]);
        for (let row = 0; row < Math.max(removed.length, added.length); row++) {
            rows.push({ old: removed[row] ?? null, new: added[row] ?? null });
        }
    }
    return rows;
}
