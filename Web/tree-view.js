// A folder at a revision.
import { breadcrumbs, shortRevision } from "./breadcrumbs.js";
import { element, show, visible } from "./elements.js";
import { errorElement } from "./errors.js";
import { nameIn, record, request, splitPath, Type } from "./records.js";
import { address, textOf } from "./route.js";
import { VirtualList } from "./virtual-list.js";

const ROW_HEIGHT = 26;

export function openTree(app, [revision = "HEAD", path = ""]) {
    return new TreeView(app, revision || "HEAD", path);
}

class TreeView {
    #entries = [];

    constructor(app, revision, path) {
        Object.assign(this, { app, revision, path });
        this.title = `${path === "" ? "Files" : textOf(path)} at ${shortRevision(revision)}`;
        this.problem = element("div", {});
        this.list = new VirtualList({
            label: "Files and folders", rowHeight: ROW_HEIGHT, fill: (node, index) => this.#fill(node, index),
            open: (index) => { location.hash = this.#addressOf(this.#entries[index]); },
            end: () => {},
        });
        this.scroller = this.list.node;
        this.node = element("section.tree", { "aria-label": this.title }, element("h1.hidden", {}, visible(this.title)),
            element("div.bar", {}, breadcrumbs(revision, path),
                element("a.button", { href: address("log", [], { branch: revision, path }) }, "History")),
            this.problem, this.list.node);
        this.keys = { u: () => { if (path !== "") location.hash = address("tree", [revision, splitPath(path).folder]); } };
        this.#load();
    }

    focus() {
        this.list.node.focus({ preventScroll: true });
    }

    shown() {
        this.list.refresh();
    }

    close() {
        this.list.close();
    }

    changed(changes) {
        if (changes.includes("head") || changes.includes("references")) this.#load();
    }

    async #load() {
        const { revision, path } = this;
        try {
            const members = { startingRevision: revision, files: path === "" ? [] : [path] };
            const { result } = await this.app.connection.perform(request(Type.tree, members));
            this.#entries = record(result).sort((a, b) => (b.kind === "folder") - (a.kind === "folder"));
            show(this.problem, this.#entries.length ? null : element("p.remark", {}, "This folder is empty."));
        } catch (error) {
            this.#entries = [];
            show(this.problem, errorElement(error));
        }
        this.list.refresh();
        this.list.setCount(this.#entries.length, true);
    }

    #addressOf(entry) {
        if (entry.kind === "submodule") return address("tree", [this.revision, this.path]);
        return address(entry.kind === "folder" ? "tree" : "file", [this.revision, nameIn(entry, "path")]);
    }

    #fill(node, index) {
        const entry = this.#entries[index];
        node.href = this.#addressOf(entry);
        const note = entry.kind === "submodule" ? `submodule at ${entry.objectID.slice(0, 12)}`
            : entry.kind === "folder" || entry.kind === "file" ? "" : entry.kind;
        const size = entry.size === undefined ? "" : `${entry.size.toLocaleString("en")} bytes`;
        show(node, element("span.subject", {}, element(`span.icon.${entry.kind === "folder" ? "folder" : "plain"}`, { "aria-hidden": "true" },
            entry.kind === "folder" ? "▸" : "·"), element("bdi", {}, visible(entry.name), entry.kind === "folder" ? "/" : "")),
        element("span.author", {}, note), element("span.size", {}, size));
    }
}
