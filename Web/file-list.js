// Changed files below each other: each with its counts and a part that unfolds to its changes.
import { diffElement } from "./diff.js";
import { count, element, show, visible } from "./elements.js";
import { errorElement } from "./errors.js";
import { imageFigure, imageType } from "./images.js";
import { nameIn, record } from "./records.js";
import { textOf } from "./route.js";

const SHOWN_FILES = 100;
const OPEN_LINES = 1500;
const OPEN_FILES = 30;

/**
 * A list of changed files.
 *
 * `files` are short records with path, state, counts. `load(files)` returns records of type 1004 for some of them;
 * `images(file)` the sources of an image before and after, each null without one; `links(file)` elements.
 */
export class FileList {
    split = false;

    constructor(app, files, { load, images = () => [], links = () => [], opens = true }) {
        Object.assign(this, { app, files, load, images, links });
        this.sections = [];
        this.node = element("div.files", {});
        this.more = element("button", { type: "button", click: () => this.#showMore() });
        this.#showMore();
        /** Resolves when the files are unfolded that open by themselves. */
        this.opened = opens ? this.#openFirst() : Promise.resolve();
    }

    #showMore() {
        const end = Math.min(this.files.length, this.sections.length + SHOWN_FILES);
        this.more.remove();
        while (this.sections.length < end) {
            const section = new FileSection(this, this.files[this.sections.length]);
            this.sections.push(section);
            this.node.append(section.node);
        }
        const rest = this.files.length - end;
        this.more.textContent = `Show ${count(rest, "more file")}`;
        if (rest > 0) this.node.append(this.more);
    }

    /** Opens the first files, as long as they are short, with one request. */
    async #openFirst() {
        const chosen = [];
        let lines = 0;
        for (const section of this.sections.slice(0, OPEN_FILES)) {
            lines += section.lineCount;
            if (lines > OPEN_LINES) break;
            chosen.push(section);
        }
        if (chosen.length === 0) return;
        await this.open(chosen);
    }

    async open(sections) {
        sections.forEach((section) => section.wait());
        await this.#fill(sections);
    }

    /** Reads the changes of the open files again, and draws those that differ; those of other files when they are opened. */
    async refresh() {
        this.sections.filter((section) => !section.isOpen).forEach((section) => section.forget());
        await this.#fill(this.sections.filter((section) => section.isOpen));
    }

    async #fill(sections) {
        if (sections.length === 0) return;
        try {
            const changes = await this.load(sections.map((section) => section.file));
            for (const section of sections) {
                const path = textOf(nameIn(section.file, "path"));
                section.fill(changes.find((entry) => textOf(nameIn(entry, "path")) === path) ?? {});
            }
        } catch (error) {
            sections.forEach((section) => section.fail(error));
        }
    }

    setSplit(split) {
        this.split = split;
        this.sections.forEach((section) => section.redraw());
    }

    /** Moves to the next or previous file. */
    move(step) {
        const index = this.sections.findIndex((section) => section.button === document.activeElement);
        const next = index < 0 && step > 0 ? 0 : Math.max(0, Math.min(index + step, this.sections.length - 1));
        this.sections[next]?.focus();
    }

    toggleCurrent() {
        this.sections.find((section) => section.button === document.activeElement)?.toggle();
    }

    /** Shows the file with the path and unfolds it. */
    reveal(path) {
        while (!this.#find(path) && this.sections.length < this.files.length) this.#showMore();
        const section = this.#find(path);
        if (!section) return;
        if (!section.isOpen) section.toggle();
        section.focus();
    }

    #find(path) {
        return this.sections.find((section) => textOf(nameIn(section.file, "path")) === textOf(path));
    }
}

/** The number of added and deleted lines as an element. */
export function countsElement({ addedLines, deletedLines, isBinary }) {
    if (isBinary) return element("span.counts", {}, "binary");
    if (addedLines === undefined) return null;
    return element("span.counts", { "aria-label": `${count(addedLines, "line")} added, ${deletedLines} deleted` , role: "img" },
        element("span.plus", {}, `+${addedLines.toLocaleString("en")}`), " ",
        element("span.minus", {}, `−${deletedLines.toLocaleString("en")}`));
}

class FileSection {
    isOpen = false;
    #changes = null;

    constructor(list, file) {
        this.list = list;
        this.file = file;
        this.lineCount = (file.addedLines ?? 0) + (file.deletedLines ?? 0);
        const path = visible(textOf(nameIn(file, "path")));
        const original = nameIn(file, "originalPath");
        const name = original === undefined ? path : `${visible(textOf(original))} → ${path}`;
        this.label = `Changes of ${path}`;
        const state = file.label ?? file.state ?? "modified";
        this.button = element("button.file", { type: "button", "aria-expanded": "false", click: () => this.toggle() },
            element(`span.state.${state.split(" ")[0]}`, { title: state }, state), element("bdi.name", {}, name));
        this.body = element("div.body", { hidden: true });
        this.node = element("section.changed-file", { "aria-label": path },
            element("h2", {}, this.button, countsElement(file), element("span.links", {}, list.links(file))), this.body);
    }

    focus() {
        this.button.focus();
        this.node.scrollIntoView({ block: "start" });
    }

    /** Returns a promise of the end of the change. */
    async toggle() {
        if (this.isOpen) this.#setOpen(false);
        else if (this.#changes) this.#setOpen(true);
        else await this.list.open([this]);
    }

    #setOpen(isOpen) {
        this.isOpen = isOpen;
        this.body.hidden = !isOpen;
        this.button.setAttribute("aria-expanded", isOpen);
    }

    forget() {
        this.#changes = null;
    }

    wait() {
        this.#setOpen(true);
        this.forget();
        show(this.body, element("p.remark", {}, "Loading…"));
    }

    fail(error) {
        this.forget();
        show(this.body, errorElement(error));
    }

    /** Draws the changes if they are not on the screen already; an image may differ without a difference here. */
    fill(changes) {
        const isShown = JSON.stringify(changes) === JSON.stringify(this.#changes);
        this.#changes = changes;
        if (!isShown || imageType(nameIn(this.file, "path"))) this.redraw();
    }

    redraw() {
        if (!this.#changes) return;
        const path = nameIn(this.file, "path");
        const isImage = imageType(path) !== undefined;
        const text = isImage && this.#changes.isBinary ? null
            : diffElement(this.#changes, { split: this.list.split, label: this.label });
        show(this.body, text);
        if (isImage) this.#showImages();
    }

    async #showImages() {
        const figures = element("div.images", {});
        this.body.prepend(figures);
        const sources = this.list.images(this.file);
        const pictures = await Promise.all(sources.map(({ path, source, caption }) =>
            imageFigure(this.list.app, path, source, caption).catch(errorElement)));
        figures.append(...pictures);
    }
}

/** Returns the files that a request for changes must name, so that renames are found: their paths and original paths. */
export function pathsOf(files) {
    return files.flatMap((file) => [nameIn(file, "path"), nameIn(file, "originalPath")])
        .filter((path) => path !== undefined);
}

/** Carries out a request of type 1004 and returns its short records. */
export async function loadChanges(app, request) {
    return record((await app.connection.perform(request)).result);
}
