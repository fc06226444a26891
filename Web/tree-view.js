// A folder at a revision.
import { breadcrumbs, shortRevision } from "./breadcrumbs.js";
import { element, show, visible } from "./elements.js";
import { ListView } from "./list-view.js";
import { nameIn, record, request, splitPath, Type } from "./records.js";
import { address, textOf } from "./route.js";

export function openTree(app, [revision = "HEAD", path = ""]) {
    return new TreeView(app, revision || "HEAD", path);
}

class TreeView extends ListView {
    constructor(app, revision, path) {
        const title = `${path === "" ? "Files" : textOf(path)} at ${shortRevision(revision)}`;
        super(app, "tree", { title, label: "Files and folders", emptyRemark: "This folder is empty." },
            breadcrumbs(revision, path), element("a.button", { href: address("log", [], { branch: revision, path }) }, "History"));
        Object.assign(this, { revision, path });
        this.keys = { u: () => { if (path !== "") location.hash = address("tree", [revision, splitPath(path).folder]); } };
        this.load();
    }

    async read() {
        const members = { startingRevision: this.revision, files: this.path === "" ? [] : [this.path] };
        const { result } = await this.app.connection.perform(request(Type.tree, members));
        return record(result).sort((a, b) => (b.kind === "folder") - (a.kind === "folder"));
    }

    addressOf(entry) {
        // The view of a submodule says where its content is.
        return address(entry.kind === "folder" || entry.kind === "submodule" ? "tree" : "file", [this.revision, nameIn(entry, "path")]);
    }

    fill(node, entry) {
        const note = entry.kind === "submodule" ? `submodule at ${entry.objectID.slice(0, 12)}`
            : entry.kind === "folder" || entry.kind === "file" ? "" : entry.kind;
        const size = entry.size === undefined ? "" : `${entry.size.toLocaleString("en")} bytes`;
        show(node, element("span.subject", {}, element("span.icon", { "aria-hidden": "true" }, entry.kind === "folder" ? "▸" : ""),
            element("bdi", {}, visible(entry.name), entry.kind === "folder" ? "/" : "")),
        element("span.author", {}, note), element("span.size", {}, size));
    }
}
