// A file at a revision, with the commit of each line beside it.
import { breadcrumbs, isObjectID, shortRevision } from "./breadcrumbs.js";
import { element, show, visible } from "./elements.js";
import { errorElement } from "./errors.js";
import { imageFigure, imageType } from "./images.js";
import { readingLatest } from "./latest.js";
import { lazyLines, lineElement } from "./lines.js";
import { contentBytes, nameIn, record, request, splitPath, Type } from "./records.js";
import { address, textOf } from "./route.js";
import { dateTime, fullTime } from "./time.js";

const MAX_BYTES = 20 << 20;
/** A file with a NUL among so many bytes or characters is binary, as in git. */
const BINARY_LENGTH = 8000;
/** The commit of a long run of lines is named again after so many lines. */
const LINES_PER_NAME = 20;

/** The revision "" is the working copy. */
export function openFile(app, [revision, path], values) {
    if (path === undefined || path === "") throw new Error("The address names no file.");
    return new FileView(app, revision, path, values);
}

class FileView {
    #groups = [];
    #cells = new Map();
    /** The records of the lines on the screen; empty without lines. */
    #shown = "";
    /** The content of the file at a revision on the screen; null without one. */
    #text = null;
    #hasScrolledToLine = false;
    #load = readingLatest(() => this.#read());

    constructor(app, revision, path, values) {
        Object.assign(this, { app, revision, path, values });
        const where = revision === "" ? "the working copy" : shortRevision(revision);
        this.title = `${textOf(path)} at ${where}`;
        this.body = element("div.body", {}, element("p.remark", {}, "Loading…"));
        this.status = element("p.remark", { role: "status" });
        this.node = element("article.page.file-view", { tabindex: "0", "aria-label": this.title },
            element("h1.hidden", {}, visible(this.title)),
            element("div.bar", {}, breadcrumbs(revision, path), revision === "" ? element("span", {}, "working copy") : null,
                element("a.button", { href: address("log", [], { branch: revision, path, follow: "1" }) }, "History"),
                revision === "" || app.repository?.isBare ? null : element("a.button", { href: address("file", ["", path]) }, "Working copy")),
            this.status, this.body);
        this.scroller = this.node;
        this.keys = { u: () => { location.hash = address("tree", [revision || "HEAD", splitPath(path).folder]); } };
        this.#load();
    }

    focus() {
        this.node.focus({ preventScroll: true });
    }

    changed(changes) {
        const followed = this.revision === "" ? ["workingTree", "head"] : isObjectID(this.revision) ? [] : ["head", "references"];
        if (followed.some((change) => changes.includes(change))) this.#load();
    }

    async #read() {
        try {
            if (this.revision === "") await this.#loadWorkingCopy();
            else await this.#loadContent();
        } catch (error) {
            this.#shown = "";
            this.#text = null;
            show(this.status);
            show(this.body, errorElement(error));
        }
    }

    async #loadContent() {
        const { app, revision, path } = this;
        if (imageType(path)) await this.#showImage(imageFigure(app, path, { revision }, shortRevision(revision)));
        const { result } = await app.connection.perform(request(Type.content,
            { startingRevision: revision, files: [path], limits: { outputBytes: MAX_BYTES } }));
        const bytes = contentBytes(record(result)[0]);
        if (bytes.subarray(0, BINARY_LENGTH).includes(0)) {
            this.#text = null;
            if (!imageType(path)) show(this.body, element("p.remark", {}, `A binary file of ${bytes.length.toLocaleString("en")} bytes.`));
            return;
        }
        const text = new TextDecoder("utf-8", { ignoreBOM: true }).decode(bytes);
        const lines = text.split("\n");
        if (lines[lines.length - 1] === "") lines.pop();
        if (text !== this.#text) {
            this.#shown = "";
            this.#groups = [];
            this.#showLines(lines);
        }
        this.#text = text;
        if (lines.length) await this.#loadBlame();
    }

    async #loadWorkingCopy() {
        const { app, path } = this;
        if (imageType(path)) await this.#showImage(imageFigure(app, path, { isWorkingCopy: true }, "Working copy").catch(errorElement));
        await this.#loadBlame();
    }

    /** Shows the image instead of an older one, or of everything. */
    async #showImage(image) {
        const figure = await image;
        const old = this.body.querySelector("figure");
        if (old) return old.replaceWith(figure);
        this.#shown = "";
        this.#text = null;
        return show(this.body, figure);
    }

    /** Reads the commits of the lines; of the working copy also the lines. */
    async #loadBlame() {
        const { app, revision, path } = this;
        if (this.#shown === "") show(this.status, "Finding the commit of each line…");
        const members = { files: [path] };
        if (revision !== "") members.startingRevision = revision;
        const { result } = await app.connection.perform(request(Type.annotation, members));
        const groups = record(result ?? []);
        show(this.status);
        const current = JSON.stringify(groups);
        if (current === this.#shown) return;
        this.#shown = current;
        this.#groups = [];
        markParity(groups);
        for (const group of groups) {
            for (let line = 0; line < group.lineCount; line++) this.#groups[group.firstLine - 1 + line] = [group, line];
        }
        if (revision === "") this.#showWorkingCopy(groups.flatMap((group) => group.lines.map(textOf)));
        else for (const [index, cell] of this.#cells) this.#fillCell(cell, index);
    }

    #showWorkingCopy(lines) {
        if (!isBinary(lines)) this.#showLines(lines);
        else if (!imageType(this.path)) show(this.body, element("p.remark", {}, "A binary file."));
    }

    #showLines(lines) {
        this.#cells.clear();
        if (lines.length === 0) return show(this.body, element("p.remark", {}, "The file is empty."));
        const list = lazyLines(lines.length, (index) => this.#line(lines[index], index));
        list.style.setProperty("--digits", String(lines.length).length);
        const old = this.body.querySelector("figure");
        show(this.body, old, element("div.blame", { tabindex: "0", role: "group", "aria-label": `Lines of ${visible(textOf(this.path))}` }, list));
        const chosen = Number(this.values.line);
        if (!chosen) return undefined;
        const node = lineElement(list, Math.min(chosen, lines.length) - 1);
        node?.classList.add("chosen");
        if (this.#hasScrolledToLine) return undefined;
        this.#hasScrolledToLine = true;
        requestAnimationFrame(() => node?.scrollIntoView({ block: "center" }));
        return undefined;
    }

    #line(text, index) {
        const cell = element("span.commit-cell", {});
        this.#cells.set(index, cell);
        this.#fillCell(cell, index);
        const number = index + 1;
        return element("div.line", {}, cell,
            element("a.number", { href: address("file", [this.revision, this.path], { line: number }), tabindex: "-1", "aria-label": `Line ${number}` },
                String(number)),
            element("span.code", {}, visible(text.replace(/\r$/, ""))));
    }

    #fillCell(cell, index) {
        const entry = this.#groups[index];
        if (!entry) return;
        const [group, offset] = entry;
        show(cell);
        cell.classList.toggle("odd", group.isOdd);
        cell.classList.toggle("first", offset === 0);
        if (offset % LINES_PER_NAME > 0) return;
        if (group.isUncommitted) return void show(cell, element("span.uncommitted", {}, "Not committed"));
        const file = nameIn(group, "originalPath");
        const title = `${group.objectID.slice(0, 12)} ${visible(group.author ?? "")}, ${fullTime(group.authorTime, group.authorTimeOffset)}\n${visible(group.subject ?? "")}`;
        show(cell, element("a.to-commit", { href: address("commit", [group.objectID], { file }), title },
            element("time", {}, dateTime(group.authorTime, group.authorTimeOffset).slice(0, 10)), " ",
            element("bdi", {}, visible(group.author ?? "")), element("span.hidden", {}, `: ${visible(group.subject ?? "")}`)),
        group.previousID ? element("a.to-before", {
            href: address("before", [group.objectID, file], { line: group.originalLine + offset }), title: "The line before this commit",
            "aria-label": `Line ${index + 1} before that commit` }, "◂") : null);
    }
}

function isBinary(lines) {
    let length = 0;
    for (const line of lines) {
        if (line.slice(0, BINARY_LENGTH - length).includes("\0")) return true;
        length += line.length + 1;
        if (length >= BINARY_LENGTH) break;
    }
    return false;
}

/** Marks every second group of lines, in the order of the file, so that neighbours differ. */
function markParity(groups) {
    const sorted = [...groups].sort((one, other) => one.firstLine - other.firstLine);
    sorted.forEach((group, index) => {
        const before = sorted[index - 1];
        group.isOdd = before !== undefined && (before.objectID === group.objectID ? before.isOdd : !before.isOdd);
    });
}
