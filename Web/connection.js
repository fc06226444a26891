// The connection to nebsc: requests, notifications, and a new connection when one is lost.

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

const RETRY_MILLISECONDS = [250, 500, 1000, 2000, 5000];

/**
 * Sends requests and receives responses. Events: "open" when a session began, "lost" when it ended, and the
 * notifications of the server by method.
 */
export class Connection extends EventTarget {
    #pending = new Map();
    #lastId = 0;
    #session = null;
    #failures = 0;
    #source = null;

    /** Connects, and goes on to do so until it works. */
    connect() {
        this.#source = new EventSource("/events");
        this.#source.addEventListener("session", (event) => this.#begin(JSON.parse(event.data).session));
        this.#source.addEventListener("message", (event) => this.#receive(JSON.parse(event.data)));
        this.#source.addEventListener("error", () => this.#end());
    }

    get isOpen() {
        return this.#session !== null;
    }

    #begin(session) {
        this.#session = session;
        this.#failures = 0;
        // Listeners make requests of their own, which are sent at once.
        const waiting = [...this.#pending];
        this.dispatchEvent(new Event("open"));
        for (const [id, entry] of waiting) this.#post(id, entry);
    }

    #end() {
        this.#source.close();
        const wait = RETRY_MILLISECONDS[Math.min(this.#failures++, RETRY_MILLISECONDS.length - 1)];
        setTimeout(() => this.connect(), wait);
        if (this.#session === null && this.#failures > 1) return;
        this.#session = null;
        for (const [id, entry] of this.#pending) {
            if (entry.repeats) continue;
            this.#pending.delete(id);
            entry.reject(new MessageError("The connection was lost.", { lost: true }));
        }
        this.dispatchEvent(new Event("lost"));
    }

    #receive(message) {
        if (message.method) {
            this.dispatchEvent(new CustomEvent(message.method, { detail: message.params }));
            return;
        }
        const entry = this.#pending.get(message.id);
        if (!entry) return;
        this.#pending.delete(message.id);
        if (message.error) entry.reject(new MessageError(message.error.message, { code: message.error.code }));
        else entry.resolve(message.result);
    }

    async #post(id, { method, params, reject }) {
        const session = this.#session;
        try {
            const response = await this.#send({ id, method, params });
            if (response.ok) return;
            const text = (await response.json().catch(() => null))?.error ?? `The server refused the request (${response.status}).`;
            if (session === this.#session && this.#pending.delete(id)) reject(new MessageError(text));
        } catch {
            // The connection is lost, which the event stream reports, too.
        }
    }

    #send(message) {
        return fetch(`/messages?session=${encodeURIComponent(this.#session)}`, {
            method: "POST", headers: { "Content-Type": "application/json" },
            body: JSON.stringify({ jsonrpc: "2.0", ...message }),
        });
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
        const entry = this.#pending.get(id);
        if (!entry) return;
        this.#pending.delete(id);
        entry.reject(reason);
        if (this.#session !== null) this.#send({ method: "$/cancelRequest", params: { id } }).catch(() => {});
    }

    /** Carries out a request of docs/json.md and returns its outcome, or throws an OutcomeError. */
    async perform(request, signal) {
        const outcome = await this.call("perform", request, { repeats: true, signal });
        if (outcome.error && !(outcome.result?.length > 0)) throw new OutcomeError(outcome.error);
        return outcome;
    }
}
