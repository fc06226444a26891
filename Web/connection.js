// The connection to nebsc: requests and notifications.
import { Hub } from "./hub.js";

/** An error of the connection or the protocol; `lost` if the connection ended before the response. */
export class MessageError extends Error {
    constructor(message, { code = 0, lost = false } = {}) {
        super(message);
        this.code = code;
        this.lost = lost;
    }
}

/** The error of an outcome; `outcomeError` has the members of docs/json.md. */
export class OutcomeError extends Error {
    constructor(outcomeError) {
        super(outcomeError.localizedDescription ?? outcomeError.text ?? "The request failed.");
        this.outcomeError = outcomeError;
    }
}

/**
 * Sends requests and receives responses. Events: "open" when a session began, "lost" when it ended, and the
 * notifications of the server by method.
 */
export class Connection extends EventTarget {
    #pending = new Map();
    #lastId = 0;
    #session = null;
    #port = null;

    /** Connects; from then on, the hub connects again when a session ends. */
    connect() {
        const worker = sharedWorker();
        if (worker === null) return this.#use(ownHub());
        worker.addEventListener("error", () => {
            this.#end();
            this.#use(ownHub());
        });
        this.#use(worker.port);
        this.#showLife();
    }

    #use(port) {
        if (this.#port) this.#port.onmessage = null;
        this.#port = port;
        port.onmessage = ({ data }) => this.#accept(data);
    }

    get isOpen() {
        return this.#session !== null;
    }

    /** Holds a lock as long as the page lives; the hub waits for it. */
    #showLife() {
        const lock = `page-${crypto.randomUUID()}`;
        navigator.locks.request(lock, () => {
            this.#port.postMessage({ lock });
            return new Promise(() => {});
        });
    }

    #accept({ session, id, text, refusal }) {
        if (session === null) this.#end();
        else if (session !== undefined) this.#begin(session);
        else if (refusal !== undefined) this.#take(id)?.reject(new MessageError(refusal));
        else this.#receive(id, JSON.parse(text));
    }

    #begin(session) {
        this.#session = session;
        // Listeners make requests of their own, which are sent at once.
        const waiting = [...this.#pending];
        this.dispatchEvent(new Event("open"));
        for (const [id, entry] of waiting) this.#post(id, entry);
    }

    #end() {
        this.#session = null;
        for (const [id, entry] of this.#pending) {
            if (entry.repeats) continue;
            this.#pending.delete(id);
            entry.reject(new MessageError("The connection was lost.", { lost: true }));
        }
        this.dispatchEvent(new Event("lost"));
    }

    #receive(id, { method, params, error, result }) {
        if (method) {
            this.dispatchEvent(new CustomEvent(method, { detail: params }));
            return;
        }
        const entry = this.#take(id);
        if (error) entry?.reject(new MessageError(error.message, { code: error.code }));
        else entry?.resolve(result);
    }

    /** Removes a pending request and returns it. */
    #take(id) {
        const entry = this.#pending.get(id);
        this.#pending.delete(id);
        return entry;
    }

    #post(id, { method, params }) {
        this.#port.postMessage({ session: this.#session, id, method, params });
    }

    /**
     * Sends a request and returns its result.
     * @param {string} method without "sourceControl/"
     * @param {{repeats, signal}} how `repeats`: send it again over a new connection; `signal` cancels it
     */
    call(method, params, { repeats = false, signal } = {}) {
        const id = ++this.#lastId;
        return new Promise((resolve, reject) => {
            if (signal?.aborted) return reject(signal.reason);
            const entry = { method: `sourceControl/${method}`, params, resolve, reject, repeats };
            this.#pending.set(id, entry);
            signal?.addEventListener("abort", () => this.#cancel(id, signal.reason));
            if (this.#session !== null) this.#post(id, entry);
            else if (!repeats) this.#pending.delete(id), reject(new MessageError("Not connected.", { lost: true }));
        });
    }

    #cancel(id, reason) {
        const entry = this.#take(id);
        if (!entry) return;
        entry.reject(reason);
        this.#port.postMessage({ cancel: id });
    }

    /** Carries out a request of docs/json.md and returns its outcome, or throws an OutcomeError. */
    async perform(request, signal) {
        const outcome = await this.call("perform", request, { repeats: true, signal });
        if (outcome.error && !(outcome.result?.length > 0)) throw new OutcomeError(outcome.error);
        return outcome;
    }
}

/**
 * Returns the worker that all pages of the browser share; null where the browser has none, or no locks, without which the
 * worker would not know when a page is gone.
 */
function sharedWorker() {
    if (!globalThis.SharedWorker || !navigator.locks) return null;
    try {
        return new SharedWorker("hub-worker.js", { type: "module", name: "nebsc" });
    } catch {
        // The browser refuses workers, for example in a private window.
        return null;
    }
}

/** Returns a port of a hub in this page, which ends with it. */
function ownHub() {
    const { port1, port2 } = new MessageChannel();
    new Hub().add(port2);
    return port1;
}
