// Branches, remote branches and tags.
import { dateElement, element, show, visible } from "./elements.js";
import { errorElement } from "./errors.js";
import { nameIn, record, request, shortReference, Type } from "./records.js";
import { address } from "./route.js";
import { VirtualList } from "./virtual-list.js";

const ROW_HEIGHT = 26;

export function openReferences(app) {
    return new ReferencesView(app);
}

class ReferencesView {
    title = "Branches and tags";
    #all = [];
    #shown = [];

    constructor(app) {
        this.app = app;
        this.search = element("input", { type: "search", "aria-label": "Filter by name", placeholder: "Filter by name",
            input: () => this.#filter() });
        this.problem = element("div", {});
        this.list = new VirtualList({
            label: this.title, rowHeight: ROW_HEIGHT, fill: (node, index) => this.#fill(node, index),
            open: (index) => { location.hash = this.#addressOf(this.#shown[index]); }, end: () => {},
        });
        this.scroller = this.list.node;
        this.node = element("section.references", { "aria-label": this.title }, element("h1.hidden", {}, this.title),
            element("div.bar", {}, this.search), this.problem, this.list.node);
        this.keys = { "/": () => this.search.focus() };
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
        try {
            const { result } = await this.app.connection.perform({ ...request(Type.references), background: true });
            this.#all = record(result);
            show(this.problem, this.#all.length ? null : element("p.remark", {}, "The repository has no branches yet."));
        } catch (error) {
            this.#all = [];
            show(this.problem, errorElement(error));
        }
        this.#filter();
    }

    #filter() {
        const text = this.search.value.toLowerCase();
        this.#shown = this.#all.filter((entry) => entry.name.toLowerCase().includes(text));
        this.list.refresh();
        this.list.setCount(this.#shown.length, true);
    }

    #addressOf(entry) {
        return address("log", [], { branch: nameIn(entry, "name") });
    }

    #fill(node, index) {
        const entry = this.#shown[index];
        const { name, kind } = shortReference(entry.name);
        node.href = this.#addressOf(entry);
        const notes = [entry.isCurrent ? "current" : "", entry.ahead ? `${entry.ahead} ahead` : "",
            entry.behind ? `${entry.behind} behind` : "", entry.upstreamIsGone ? "upstream is gone" : ""].filter(Boolean);
        show(node, element("span.subject", {}, element(`span.ref.${kind}`, {}, visible(name)),
            notes.length ? element("span.path", {}, notes.join(", ")) : null, element("bdi", {}, visible(entry.subject ?? ""))),
        element("span.author", {}, kind === "remote" ? "remote branch" : kind),
        entry.time === undefined ? null : dateElement(entry.time, entry.timeOffset));
    }
}
