// A view of a list that one request returns.
import { element, show, visible } from "./elements.js";
import { errorElement } from "./errors.js";
import { readingLatest } from "./latest.js";
import { VirtualList } from "./virtual-list.js";

const ROW_HEIGHT = 26;

/**
 * A view of a list. A subclass has the methods `read()`, which returns a promise of the entries, `addressOf(entry)`, and
 * `fill(node, entry)`, which shows an entry in a row; it calls load() at the end of its constructor.
 */
export class ListView {
    #entries = [];
    #accepts = () => true;
    #shown = [];

    /**
     * @param {string} name the class of the element
     * @param {{title, label, emptyRemark}} texts of the view, of the list, and of a list without entries
     * @param {...Node} bar elements above the list
     */
    constructor(app, name, { title, label, emptyRemark }, ...bar) {
        Object.assign(this, { app, title, emptyRemark });
        this.problem = element("div", {});
        this.list = new VirtualList({
            label, rowHeight: ROW_HEIGHT, fill: (node, index) => this.#fill(node, this.#shown[index]),
            open: (index) => { location.hash = this.addressOf(this.#shown[index]); },
        });
        this.scroller = this.list.node;
        this.node = element(`section.${name}`, { "aria-label": title }, element("h1.hidden", {}, visible(title)),
            element("div.bar", {}, bar), this.problem, this.list.node);
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
        if (changes.includes("head") || changes.includes("references")) this.load();
    }

    load = readingLatest(() => this.#readEntries());

    async #readEntries() {
        try {
            this.#entries = await this.read();
            show(this.problem, this.#entries.length ? null : element("p.remark", {}, this.emptyRemark));
        } catch (error) {
            this.#entries = [];
            show(this.problem, errorElement(error));
        }
        this.filter(this.#accepts);
    }

    /** Shows only the entries that are accepted. */
    filter(accepts) {
        this.#accepts = accepts;
        this.#shown = this.#entries.filter(accepts);
        this.list.refresh();
        this.list.setCount(this.#shown.length, true);
    }

    #fill(node, entry) {
        node.href = this.addressOf(entry);
        this.fill(node, entry);
    }
}
