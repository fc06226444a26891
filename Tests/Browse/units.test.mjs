// Tests the modules of the page that need no browser.
import assert from "node:assert/strict";
import { test } from "node:test";

import { addedLines } from "../../Web/untracked.js";
import { History } from "../../Web/history.js";
import { readingLatest } from "../../Web/latest.js";
import { place, width } from "../../Web/lanes.js";
import { lineBefore } from "../../Web/diff-lines.js";
import { record, request, shortReference, splitPath } from "../../Web/records.js";
import { address, decodeName, encodeName, parse, textOf } from "../../Web/route.js";
import { placeRows, RowPacker, rowOf } from "../../Web/rows.js";
import { dateTime, fullTime, relativeTime } from "../../Web/time.js";
import { compareLines, pairLines, tokens } from "../../Web/words.js";

const id = (letter) => letter.repeat(40);

function placeAll(commits) {
    let lanes = [];
    return commits.map(([commit, parents]) => {
        const row = place(lanes, commit, parents);
        ({ lanes } = row);
        return row;
    });
}

test("a line of commits stays in one lane", () => {
    const rows = placeAll([["c", ["b"]], ["b", ["a"]], ["a", []]]);
    assert.deepEqual(rows.map((row) => row.column), [0, 0, 0]);
    assert.deepEqual(rows[0], { column: 0, into: [], out: [0], through: [], lanes: ["b"] });
    assert.deepEqual(rows[2], { column: 0, into: [0], out: [], through: [], lanes: [] });
});

test("a merge opens a lane, and the branch joins its first commit again", () => {
    const rows = placeAll([["m", ["a", "t"]], ["t", ["r"]], ["a", ["r"]], ["r", []]]);
    assert.deepEqual(rows.map((row) => row.column), [0, 1, 0, 0]);
    assert.deepEqual(rows[0].out, [0, 1]);
    assert.deepEqual(rows[1].through, [0]);
    assert.deepEqual(rows[2].out, [0], "the line of first parents is straight");
    assert.deepEqual(rows[3].into, [0, 1]);
    assert.equal(Math.max(...rows.map(width)), 2);
});

test("a second tip takes a free lane, and free lanes are used again", () => {
    const rows = placeAll([["x", ["r"]], ["y", ["r"]], ["r", []], ["z", []]]);
    assert.deepEqual(rows.map((row) => row.column), [0, 1, 0, 0]);
    assert.deepEqual(rows[2].into, [0, 1]);
    assert.deepEqual(rows[3].lanes, []);
});

test("an octopus merge has a lane for each parent", () => {
    assert.deepEqual(place([], "m", ["a", "b", "c"]).out, [0, 1, 2]);
});

test("the state above a row is not changed", () => {
    const lanes = ["a", null, "b"];
    place(lanes, "a", ["c", "d"]);
    assert.deepEqual(lanes, ["a", null, "b"]);
});

test("words that changed are marked, the others are not", () => {
    assert.deepEqual(compareLines("return one;", "return two;"), {
        old: [["return ", false], ["one", true], [";", false]], new: [["return ", false], ["two", true], [";", false]],
    });
    assert.deepEqual(compareLines("f(a)", "f(a, b)").old, [["f(a)", false]]);
});

test("lines that have nothing in common, or are very long, get no marks", () => {
    assert.equal(compareLines("alpha beta gamma", "one two three four"), null);
    assert.equal(compareLines("a ".repeat(1000), "b ".repeat(1000)), null);
});

test("tokens keep every character", () => {
    for (const line of ["", "\t x+=1; // ä 日本 \u{1f600}", "a\u0301b"]) assert.equal(tokens(line).join(""), line);
});

test("removed and added lines stand beside each other", () => {
    const line = (kind, text) => ({ kind, text });
    const [same, one, two, three] = [line(" ", "s"), line("-", "1"), line("-", "2"), line("+", "3")];
    assert.deepEqual(pairLines([same, one, two, three, same]),
        [{ old: same, new: same }, { old: one, new: three }, { old: two, new: null }, { old: same, new: same }]);
});

test("a file that is not tracked becomes added lines", () => {
    const bytes = (text) => new TextEncoder().encode(text);
    const added = (...lines) => ({ hunks: [{ oldStart: 0, oldCount: 0, newStart: 1, newCount: 2, lines }] });
    assert.deepEqual(addedLines(bytes("a\nb\n")), added("+a", "+b"));
    assert.deepEqual(addedLines(bytes("a\n+b")), added("+a", "++b", "\\ No newline at end of file"));
    assert.deepEqual(addedLines(bytes("a\0")), { isBinary: true });
    assert.deepEqual(addedLines(bytes("")), { remark: "The file is empty." });
});

test("the line before a change is found", () => {
    const hunks = [
        { oldStart: 3, oldCount: 1, newStart: 3, newCount: 2, lines: ["-old", "+new", "+more"] },
        { oldStart: 10, oldCount: 2, newStart: 10, newCount: 0, lines: ["-gone", "-gone"] },
    ];
    assert.deepEqual([1, 3, 4, 5, 10, 11].map((line) => lineBefore(hunks, line)), [1, 3, 3, 4, 9, 12]);
    assert.equal(lineBefore([], 7), 7);
});

test("addresses keep every name", () => {
    const names = ["a/b c", "100%", "%41", "#?&=/", "\u202e", "ä\n", { base64: "YuRyLnR4dA==" }, "", "<b>"];
    for (const name of names) {
        assert.deepEqual(decodeName(encodeName(name)), name);
        assert.deepEqual(parse(address("file", ["HEAD", name])).segments, ["HEAD", name]);
        if (name !== "") assert.deepEqual(parse(address("log", [], { path: name })).values, { path: name });
    }
    assert.match(address("log", [], { path: "<a href='x'>" }), /^#\/log\?path=[A-Za-z0-9%._~-]+$/);
});

test("addresses leave out absent values, and invalid ones do not throw", () => {
    assert.equal(address("log", [], { path: "", all: false, branch: undefined, follow: null }), "#/log");
    assert.deepEqual(parse(""), { view: "", segments: [], values: {} });
    assert.deepEqual(parse("#/log?%zz&=x&a=%e4"), { view: "log", segments: [], values: { a: { base64: "5A==" } } });
    assert.equal(textOf({ base64: "YuRy" }), "b\ufffdr");
});

test("dates are those of the time zone of the commit", () => {
    assert.equal(dateTime(1600000000, 0), "2020-09-13 12:26");
    assert.equal(fullTime(1600000000, -570), "2020-09-13 02:56 -0930");
    assert.equal(dateTime(9e15, 0), "");
    assert.equal(fullTime(9e15, 0), "");
});

test("relative dates", () => {
    const now = 1_000_000_000;
    const cases = { 3: "just now", 59: "59 seconds ago", 60: "1 minute ago", 7200: "2 hours ago", 86400: "1 day ago",
        [-7200]: "in 2 hours", [400 * 86400]: "1 year ago" };
    for (const [age, text] of Object.entries(cases)) assert.equal(relativeTime(now - age, now), text);
});

test("records get short keys", () => {
    const long = (name) => `NEBSourceControlOperation${name}Key`;
    const value = { [long("ObjectID")]: "1", [long("IsHEAD")]: true, [long("PathBytes")]: { base64: "5A==" },
        [long("Hunks")]: [{ [long("OldStart")]: 1, [long("Lines")]: ["+a", { base64: "5A==" }] }] };
    assert.deepEqual(record(value), { objectID: "1", isHEAD: true, pathBytes: { base64: "5A==" },
        hunks: [{ oldStart: 1, lines: ["+a", { base64: "5A==" }] }] });
    assert.deepEqual(request(1001, { files: ["x"] }, { Follow: true, Since: undefined, SearchMessage: "", FirstParent: false }),
        { type: 1001, files: ["x"], options: { NEBSourceControlRequestOptionFollow: true } });
});

test("paths and names of references are split", () => {
    assert.deepEqual(splitPath("a/b/c"), { folder: "a/b", last: "c" });
    assert.deepEqual(splitPath({ base64: btoa("d\xe4/x") }), { folder: { base64: btoa("d\xe4") }, last: "x" });
    assert.deepEqual(shortReference("refs/heads/a/b"), { name: "a/b", kind: "branch" });
    assert.deepEqual(shortReference("refs/stash"), { name: "stash", kind: "other" });
});

test("packed rows are the rows that were packed", async () => {
    const key = (name) => `NEBSourceControlOperation${name}Key`;
    const rows = [
        { [key("ObjectID")]: id("a"), [key("Parents")]: [id("b")], [key("Author")]: "Ann", [key("AuthorTime")]: 1,
          [key("Subject")]: "ä\u{1f600}", [key("References")]: ["refs/heads/main"], [key("IsHEAD")]: true },
        { [key("ObjectID")]: id("b"), [key("Parents")]: [id("c"), id("d")], [key("Author")]: "Ben", [key("AuthorTime")]: 2,
          [key("AuthorTimeOffset")]: -60, [key("Subject")]: "", [key("Changes")]: [{ [key("Path")]: "x" }] },
        { [key("ObjectID")]: id("e"), [key("Author")]: "Ann", [key("AuthorTime")]: 3, [key("Subject")]: "x".repeat(999) },
    ].map(rowOf);
    const packer = new RowPacker();
    const page = await packer.pack(rows);
    assert.deepEqual(await packer.unpack(page), rows);
    assert.equal(page.ids.length, 60);
    assert.ok(rows[2].subject.length < 300);
    assert.deepEqual(placeRows(await packer.unpack(page), []), placeRows(rows, []));
});

test("a long list is packed and unpacked without requestIdleCallback, which WebKit lacks", async () => {
    const key = (name) => `NEBSourceControlOperation${name}Key`;
    assert.equal(globalThis.requestIdleCallback, undefined);
    const records = Array.from({ length: 10_000 }, (_, index) => (
        { [key("ObjectID")]: String(index).padStart(40, "0"), [key("Author")]: "Ann Example", [key("Subject")]: `${index}` }));
    const history = new History({ call: async () => ({ cursor: null, records }) }, {});
    const event = (name) => new Promise((resolve) => { history.addEventListener(name, resolve, { once: true }); });
    await event("end");
    assert.equal(history.row(0), null);
    // The neighbour of its page is unpacked too, perhaps first.
    while (history.row(0) === null) await event("unpacked");
    assert.equal(history.row(0).subject, "0");
});

test("calls during a read make it read once more", async () => {
    const ends = [];
    const read = readingLatest(() => new Promise((resolve) => { ends.push(resolve); }));
    const whole = read();
    read();
    read();
    assert.equal(ends.length, 1);
    ends[0]();
    await new Promise(setImmediate);
    assert.equal(ends.length, 2);
    ends[1]();
    await whole;
    read();
    assert.equal(ends.length, 3);
});
