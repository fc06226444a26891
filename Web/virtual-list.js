// A list of many rows of equal height, of which only the visible ones are elements.
import { element } from "./elements.js";

// Browsers limit the height of an element; a longer list scrolls faster than its scroll bar.
const MAX_HEIGHT = 16_000_000;
const MARGIN = 4;

/** Sets an attribute if it has another value: a change costs the browser more than the comparison. */
function setAttribute(node, name, value) {
    if (node.getAttribute(name) !== String(value)) node.setAttribute(name, value);
}

/**
 * A scrolling list box. Rows are options, the current one is the active descendant.
 *
 * `fill(node, index)` shows the row in a node that may have shown another row. `open(index)` is called when the reader
 * chooses a row; `drawn(first, last)` after rows were drawn.
 */
export class VirtualList {
    /** The first visible row, and the one after the last. */
    first = 0;
    last = 0;
    /** The width when rows were last drawn. */
    width = 0;
    current = -1;

    #count = 0;
    #isComplete = false;
    #nodes = [];
    #shown = new Map();
    #frame = 0;
    #shownHeight = 0;

    constructor({ label, rowHeight, tag = "a", fill, open, drawn = () => {}, end = () => {} }) {
        Object.assign(this, { rowHeight, tag, fill, open, drawn, end });
        this.layer = element("div.layer", { role: "none" });
        this.spacer = element("div.spacer", { role: "none" }, this.layer);
        this.node = element("div.virtual-list", {
            role: "listbox", tabindex: "0", "aria-label": label,
            scroll: () => this.#schedule(), keydown: (event) => this.#key(event), click: (event) => this.#click(event),
        }, this.spacer);
        this.observer = new ResizeObserver(() => this.refresh());
        this.observer.observe(this.node);
    }

    close() {
        this.observer.disconnect();
        cancelAnimationFrame(this.#frame);
    }

    get count() {
        return this.#count;
    }

    /** The number of rows that fit. */
    get page() {
        return Math.max(1, Math.floor(this.node.clientHeight / this.rowHeight) - 1);
    }

    /** Says how many rows there are, and whether more will come. */
    setCount(count, isComplete) {
        this.#count = count;
        if (this.current < 0 && count > 0) this.current = 0;
        this.#isComplete = isComplete;
        this.#schedule();
    }

    /** Gives the list its height. Not at once when there are more rows: each change costs a layout. */
    #setHeight() {
        const height = Math.min(this.#height, MAX_HEIGHT);
        if (height !== this.#shownHeight) this.spacer.style.height = `${height}px`;
        this.#shownHeight = height;
    }

    /** Draws all visible rows again. */
    refresh() {
        this.#shown.clear();
        this.#schedule();
    }

    get #height() {
        return this.#count * this.rowHeight;
    }

    /** The distance from the top of the list to the top of the view, in the height of all rows. */
    get top() {
        const room = this.node.clientHeight;
        if (this.#height <= MAX_HEIGHT) return this.node.scrollTop;
        return this.node.scrollTop * (this.#height - room) / (MAX_HEIGHT - room);
    }

    set top(value) {
        this.#setHeight();
        const room = this.node.clientHeight;
        const scale = this.#height <= MAX_HEIGHT ? 1 : (MAX_HEIGHT - room) / (this.#height - room);
        this.node.scrollTop = value * scale;
        this.#schedule();
    }

    #schedule() {
        if (!this.#frame) this.#frame = requestAnimationFrame(() => this.#draw());
    }

    #draw() {
        this.#frame = 0;
        // Before the first change, which would make the browser lay out the page twice.
        const { top } = this;
        const { scrollTop } = this.node;
        const room = this.node.clientHeight;
        this.width = this.node.clientWidth;
        this.first = Math.max(0, Math.floor(top / this.rowHeight));
        this.last = Math.min(this.#count, Math.ceil((top + room) / this.rowHeight));
        const from = Math.max(0, this.first - MARGIN);
        const to = Math.min(this.#count, this.last + MARGIN);
        this.#setHeight();
        this.layer.style.transform = `translateY(${scrollTop - top + from * this.rowHeight}px)`;
        this.#provide(to - from);
        const used = new Set();
        for (let index = from; index < to; index++) {
            const slot = index % this.#nodes.length;
            const node = this.#nodes[slot];
            used.add(slot);
            node.style.transform = `translateY(${(index - from) * this.rowHeight}px)`;
            node.hidden = false;
            if (this.#shown.get(slot) !== index) this.#show(node, slot, index);
            setAttribute(node, "aria-setsize", this.#isComplete ? this.#count : -1);
        }
        this.#nodes.forEach((node, slot) => { if (!used.has(slot)) node.hidden = true; });
        this.#markCurrent(from, to);
        this.drawn(from, to);
    }

    #provide(count) {
        if (this.#nodes.length >= count) return;
        this.#shown.clear();
        while (this.#nodes.length < count + MARGIN) {
            const node = element(`${this.tag}.row`, { role: "option", tabindex: "-1" });
            this.#nodes.push(node);
            this.layer.append(node);
        }
    }

    #show(node, slot, index) {
        this.#shown.set(slot, index);
        node.id = `row-${index}`;
        node.dataset.index = index;
        node.setAttribute("aria-posinset", index + 1);
        this.fill(node, index);
    }

    #markCurrent(from, to) {
        for (const node of this.#nodes) {
            const isCurrent = !node.hidden && Number(node.dataset.index) === this.current;
            node.classList.toggle("current", isCurrent);
            setAttribute(node, "aria-selected", isCurrent);
        }
        if (this.current >= from && this.current < to) {
            this.node.setAttribute("aria-activedescendant", `row-${this.current}`);
        } else {
            this.node.removeAttribute("aria-activedescendant");
        }
    }

    /** Makes the row current and scrolls to it. */
    select(index) {
        if (this.#count === 0) return;
        this.current = Math.max(0, Math.min(index, this.#count - 1));
        const start = this.current * this.rowHeight;
        const { top } = this;
        if (start < top) this.top = start;
        else if (start + this.rowHeight > top + this.node.clientHeight) {
            this.top = start + this.rowHeight - this.node.clientHeight;
        }
        this.#schedule();
    }

    #click(event) {
        const row = event.target.closest?.("[data-index]");
        if (!row) return;
        this.current = Number(row.dataset.index);
        this.#schedule();
    }

    #key(event) {
        if (event.ctrlKey || event.altKey || event.metaKey) return;
        const moves = {
            ArrowDown: 1, j: 1, ArrowUp: -1, k: -1, PageDown: this.page, " ": this.page, PageUp: -this.page,
            Home: -Infinity,
        };
        if (event.key === "Enter" && this.current >= 0) this.open(this.current);
        else if (event.key === "End") this.end(), this.select(this.#count - 1);
        else if (event.key in moves) this.select(this.current + moves[event.key]);
        else return;
        event.preventDefault();
    }
}
