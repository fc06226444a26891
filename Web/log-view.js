// The history: rows with lanes, references, author and date, read as far as the reader scrolls; search and filters.
import { CommitRow } from "./commit-row.js";
import { count, element, show, visible } from "./elements.js";
import { errorElement } from "./errors.js";
import { filterForm } from "./filter-form.js";
import { Graph } from "./graph.js";
import { History } from "./history.js";
import { record, request, Type } from "./records.js";
import { address, textOf } from "./route.js";
import { VirtualList } from "./virtual-list.js";

const ROW_HEIGHT = 26;
const NARROW = 600;
const NO_MATCH = "No commits match. Change the search, the branch or the filter, or clear them.";

/** Returns the request of the values of an address. */
export function logRequest(values) {
    const searches = { message: "SearchMessage", author: "SearchAuthor", content: "SearchContent" };
    const options = { AllReferences: values.branch === "*", IgnoreCase: false, Since: values.since && `${values.since}T00:00:00`,
        Until: values.until && `${values.until}T23:59:59` };
    for (const [key, option] of Object.entries(searches)) options[option] = values[key];
    if (values.message || values.author) options.IgnoreCase = true;
    const members = {};
    if (values.branch && values.branch !== "*") members.startingRevision = values.branch;
    if (values.path) {
        members.files = [values.path];
        if (values.follow) options.Follow = options.LogOutputFilesChanged = true;
        else options.RewriteParents = true;
    }
    return request(Type.history, members, options);
}

/** Whether the parents of the rows are rows, so that lanes connect them. */
function hasLanes(values) {
    return !values.message && !values.author && !values.content && !values.since && !values.until && !values.follow;
}

export function openLog(app, segments, values) {
    return new LogView(app, values);
}

class LogView {
    #withLanes;
    /** A promise of the references as a text. */
    #references;
    /** A promise of the first commit of the list; undefined if the list is empty. */
    #first;

    constructor(app, values) {
        this.app = app;
        this.values = values;
        this.#withLanes = hasLanes(values);
        this.title = values.path ? `History of ${textOf(values.path)}` : "History";
        this.status = element("p.status", { role: "status" });
        this.problem = element("div", {});
        this.form = filterForm(app, values);
        this.parts = new Map();
        this.graph = new Graph(ROW_HEIGHT);
        this.list = new VirtualList({
            label: "Commits", rowHeight: ROW_HEIGHT, fill: (node, index) => this.#fill(node, index),
            open: (index) => {
                const row = this.history.row(index);
                if (row) location.hash = this.#addressOf(row);
            },
            drawn: (from, to) => this.#drawn(from, to), end: () => this.#readAll(),
        });
        if (this.#withLanes) this.list.layer.prepend(this.graph.canvas);
        this.scroller = this.list.node;
        this.node = element("section.log", { "aria-label": this.title },
            element("h1.hidden", {}, visible(this.title)), this.form.node, this.problem, this.list.node, this.status);
        this.keys = { "/": () => this.form.focus(), u: () => { location.hash = address("log"); } };
        this.#read();
        this.#references = this.form.refresh();
    }

    focus() {
        this.list.node.focus({ preventScroll: true });
    }

    /** The list may have changed its width while another view was shown. */
    shown() {
        this.list.refresh();
        if (this.needsNotice) this.#notify();
    }

    close() {
        this.history.close();
        this.list.close();
    }

    changed(changes) {
        if (!changes.includes("head") && !changes.includes("references")) return;
        this.#references = this.form.refresh();
        this.#readOrNotify();
    }

    /** Does what changed() does if HEAD or a reference is not as it was when the list was read. */
    async check() {
        const before = this.#references;
        this.#references = this.form.refresh();
        const beginsAtHEAD = !Object.values(this.values).some(Boolean);
        const [one, other, first, head] = await Promise.all([before, this.#references,
            ...beginsAtHEAD ? [this.#first, this.#readHEAD()] : []]);
        if (one !== other || first !== head) this.#readOrNotify();
    }

    /** Returns a promise of the commit of HEAD; undefined without one. */
    #readHEAD() {
        return this.app.connection.perform({ ...request(Type.history, {}, { LogOutputLimit: 1 }), background: true })
            .then(({ result }) => record(result)[0]?.objectID, () => undefined);
    }

    /** Reads the list again if the reader sees its top; otherwise offers to. */
    #readOrNotify() {
        if (this.list.top < ROW_HEIGHT && this.list.current <= 0) this.#read();
        else this.#notify();
    }

    #notify() {
        this.needsNotice = true;
        if (this.app.view !== this) return;
        this.app.notice("history", "The history has changed.", "Show it", () => {
            this.app.notice("history", null);
            this.list.current = -1;
            this.list.top = 0;
            this.#read();
            this.focus();
        });
    }

    #read() {
        this.next?.close();
        this.needsNotice = false;
        const history = new History(this.app.connection, logRequest(this.values), { withLanes: this.#withLanes });
        this.next = history;
        const started = () => {
            if (this.next !== history) return;
            if (this.history !== history) this.history.close();
            this.history = history;
            this.next = null;
            show(this.problem);
            this.list.refresh();
        };
        this.#first = new Promise((resolve) => {
            for (const event of ["rows", "end"]) history.addEventListener(event, () => resolve(history.row(0)?.id), { once: true });
        });
        history.addEventListener("rows", () => { started(); this.#grow(); });
        history.addEventListener("end", () => { started(); this.#grow(); });
        history.addEventListener("unpacked", () => { if (this.history === history && this.#hasGap) this.#fillGap(); });
        history.addEventListener("changed", () => { if (this.history === history) this.#notify(); });
        this.history ??= history;
        history.want(0);
        this.#showStatus();
    }

    /** Whether a row was drawn that was not unpacked yet. */
    #hasGap = false;

    #fillGap() {
        this.#hasGap = false;
        this.list.refresh();
    }

    #readAll() {
        this.#wantsAll = !this.history.isComplete;
        if (this.#wantsAll) this.history.want(Infinity);
        this.#showStatus();
    }

    #wantsAll = false;

    /** Shows new rows; follows the end while the reader asked for all of them. */
    #grow() {
        const { history, list } = this;
        const isAtEnd = this.#wantsAll && list.current === list.count - 1;
        list.setCount(history.count, history.isComplete);
        if (this.#wantsAll && !isAtEnd) {
            this.#wantsAll = false;
            history.stopAt(list.last);
        }
        if (isAtEnd) list.select(history.count - 1);
        if (history.isComplete) this.#wantsAll = false;
        if (history.isComplete && history.error) show(this.problem, errorElement(history.error));
        else if (history.isComplete && history.count === 0) show(this.problem, element("p.remark", {}, NO_MATCH));
        this.#showStatus();
    }

    #showStatus() {
        const { history } = this;
        let text = count(history.count, "commit");
        if (!history.isComplete) text = history.count ? `${text} read, more below` : "Reading the history…";
        else if (history.isCut) text = `The first ${text}. Search, or choose a path or date, to see older ones.`;
        else if (history.count === 0 && !history.error) text = "No commits match.";
        if (this.#wantsAll) text = `${count(history.count, "commit")} read, reading to the end…`;
        if (this.status.textContent !== text) this.status.textContent = text;
        this.node.dataset.complete = history.isComplete;
    }

    #addressOf(row) {
        return address("commit", [row.id], row.path !== undefined ? { file: row.path } : {});
    }

    #fill(node, index) {
        const row = this.history.row(index);
        if (!this.parts.has(node)) this.parts.set(node, new CommitRow(node));
        const parts = this.parts.get(node);
        if (!row) {
            this.#hasGap = true;
            node.removeAttribute("href");
            return parts.clear();
        }
        node.href = this.#addressOf(row);
        return parts.fill(row, this.values.follow && row.path);
    }

    #drawn(from, to) {
        this.history.want(to);
        if (!this.#withLanes) return;
        const rows = [];
        for (let index = from; index < to; index++) rows.push(this.history.row(index));
        const most = this.list.width < NARROW ? 6 : 20;
        const width = this.graph.draw(rows, most);
        if (width !== this.graphWidth) this.list.node.style.setProperty("--graph", `${width + 6}px`);
        this.graphWidth = width;
    }
}
