// The commits of a request of type 1001, read through a cursor as far as the reader scrolls.
import { OutcomeError } from "./connection.js";
import { placeRows, RowPacker, rowOf } from "./rows.js";

const FIRST_PAGE = 100;
const NEXT_PAGE = 250;
/** For a reader who waits for the end. */
const LARGE_PAGE = 1000;
const PACKED_ROWS = 500;
const READ_AHEAD = 5000;
const UNPACKED_PAGES = 12;
const MAX_BYTES = 160 << 20;
const INVALID_CURSOR = -32602;

/** Waits until the browser is idle, at most for a second; WebKit cannot report that, and waits for its other tasks. */
function idleTime() {
    return new Promise((resolve) => {
        if (globalThis.requestIdleCallback) requestIdleCallback(resolve, { timeout: 1000 });
        else setTimeout(resolve);
    });
}

/**
 * A list of commits. Events: "rows" when there are more, "unpacked" when rows that were null are there, "end" when all were
 * read or an error stopped it, "changed" when the repository no longer has the commits that were read before a new
 * connection.
 */
export class History extends EventTarget {
    /** The number of rows that were read. */
    count = 0;
    /** Whether there are no more rows. */
    isComplete = false;
    /** Whether reading stopped because the list would take too much memory. */
    isCut = false;
    /** The error that stopped the list; null without one. */
    error = null;

    #connection;
    #request;
    #withLanes;
    #packer = new RowPacker();
    #pages = [];
    #bytes = 0;
    #tail = [];
    #lanes = [];
    #tailLanes = [];
    #unpacked = new Map();
    #wanted = 0;
    #lastId = null;
    #closing = new AbortController();
    #cursor = null;

    constructor(connection, request, { withLanes = true } = {}) {
        super();
        this.#connection = connection;
        this.#request = request;
        this.#withLanes = withLanes;
        this.#read();
    }

    /** Ends the cursor; no event follows. */
    close() {
        this.#closing.abort(new DOMException("closed", "AbortError"));
        if (this.#cursor) this.#connection.call("close", { cursor: this.#cursor }).catch(() => {});
        this.#cursor = null;
    }

    /** Asks for the rows up to the index and some more; Infinity asks for all. */
    want(index) {
        this.#wanted = Math.max(this.#wanted, index + READ_AHEAD);
        this.#wake?.();
    }

    /** Takes a want(Infinity) back. */
    stopAt(index) {
        this.#wanted = index + READ_AHEAD;
    }

    /** Returns the row at the index, with its lanes; null if it was not read yet, or until it is unpacked. */
    row(index) {
        if (index < 0 || index >= this.count) return null;
        const page = Math.floor(index / PACKED_ROWS);
        if (page >= this.#pages.length) return this.#tail[index - this.#pages.length * PACKED_ROWS];
        this.#keepUnpacked(page);
        return this.#unpacked.get(page)?.[index % PACKED_ROWS] ?? null;
    }

    #wake = null;

    async #read() {
        while (!this.isComplete && !this.#closing.signal.aborted) {
            try {
                await this.#readCursor();
            } catch (error) {
                if (this.#closing.signal.aborted) return;
                // Without a cursor, the request itself is invalid.
                const hasExpired = this.#cursor !== null && error.code === INVALID_CURSOR;
                if (!error.lost && !hasExpired) return this.#finish(error);
                if (!this.#connection.isOpen) await this.#nextConnection();
            }
        }
    }

    #nextConnection() {
        return new Promise((resolve) => {
            this.#connection.addEventListener("open", resolve, { once: true, signal: this.#closing.signal });
        });
    }

    /** Reads from a new cursor; leaves out the rows that an earlier one delivered. */
    async #readCursor() {
        const signal = this.#closing.signal;
        let skip = this.count;
        const pageSize = skip > 0 ? 10_000 : FIRST_PAGE;
        this.#cursor = null;
        let page = await this.#connection.call("open", { request: this.#request, pageSize }, { signal });
        for (;;) {
            this.#cursor = page.cursor;
            // The next page is on its way while this one is shown.
            const next = this.#cursor && (skip > 0 || this.count < this.#wanted) ? this.#next(signal) : null;
            next?.catch(() => {});
            const skipped = Math.min(skip, page.records.length);
            skip -= skipped;
            if (skipped > 0 && skip === 0 && rowOf(page.records[skipped - 1]).id !== this.#lastId) return this.#change();
            this.#add(page.records.slice(skipped));
            if (!page.cursor) return skip > 0 ? this.#change() : this.#end(page.outcome);
            page = await (next ?? this.#nextWhenWanted(signal));
            if (page === null) return;
        }
    }

    #next(signal) {
        return this.#connection.call("next", { cursor: this.#cursor, pageSize: this.#wanted === Infinity ? LARGE_PAGE : NEXT_PAGE }, { signal });
    }

    async #nextWhenWanted(signal) {
        if (this.#bytes > MAX_BYTES) {
            this.isCut = true;
            this.#finish(null);
            this.#connection.call("close", { cursor: this.#cursor }).catch(() => {});
            return null;
        }
        while (this.count >= this.#wanted) {
            await new Promise((resolve) => {
                this.#wake = resolve;
                signal.addEventListener("abort", resolve, { once: true });
            });
            if (signal.aborted) throw signal.reason;
        }
        return this.#next(signal);
    }

    #change() {
        this.close();
        this.dispatchEvent(new Event("changed"));
    }

    #end(outcome) {
        this.#finish(outcome?.error ? new OutcomeError(outcome.error) : null);
    }

    #finish(error) {
        this.error = error;
        this.isComplete = true;
        this.#cursor = null;
        this.dispatchEvent(new Event("end"));
    }

    #add(records) {
        if (records.length === 0) return;
        const rows = records.map(rowOf);
        if (this.#withLanes) this.#tailLanes = placeRows(rows, this.#tailLanes);
        this.#lastId = rows[rows.length - 1].id;
        this.#tail.push(...rows);
        this.count += rows.length;
        while (this.#tail.length >= 2 * PACKED_ROWS) this.#packTail();
        this.dispatchEvent(new Event("rows"));
    }

    /** Packs the first rows of the tail; until they are packed, they stay as they are. */
    #packTail() {
        const rows = this.#tail.splice(0, PACKED_ROWS);
        const page = { lanes: this.#lanes };
        this.#unpacked.set(this.#pages.push(page) - 1, rows);
        page.packed = this.#pack(rows);
        if (this.#withLanes) this.#lanes = placeRows(rows, this.#lanes);
        this.#forgetOldest();
    }

    /** Packs rows between frames, so that a reader who scrolls does not wait; at once for one who waits for the end. */
    async #pack(rows) {
        if (this.#wanted !== Infinity) await idleTime();
        const packed = await this.#packer.pack(rows);
        this.#bytes += packed.bytes;
        return packed;
    }

    /** Unpacks the page, and its neighbours, to which the reader may scroll next. */
    #keepUnpacked(page) {
        const rows = this.#unpacked.get(page);
        if (rows) {
            this.#unpacked.delete(page);
            this.#unpacked.set(page, rows);
        }
        for (const near of [page, page - 1, page + 1]) {
            if (this.#pages[near] && !this.#unpacked.has(near)) this.#unpack(near);
        }
    }

    async #unpack(number) {
        const { packed, lanes } = this.#pages[number];
        this.#unpacked.set(number, null);
        const rows = await this.#packer.unpack(await packed);
        if (this.#withLanes) placeRows(rows, lanes);
        this.#unpacked.set(number, rows);
        this.#forgetOldest();
        this.dispatchEvent(new Event("unpacked"));
    }

    #forgetOldest() {
        for (const number of this.#unpacked.keys()) {
            if (this.#unpacked.size <= UNPACKED_PAGES) return;
            this.#unpacked.delete(number);
        }
    }
}
