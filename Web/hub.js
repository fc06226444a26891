// One session with nebsc for all pages of a browser, which opens few connections to a server.

const RETRY_MILLISECONDS = [250, 500, 1000, 2000, 5000];
/** The id at the beginning of a response. */
const RESPONSE_ID = /^\{"jsonrpc":"2\.0","id":(\d+)[,}]/;
/** What a request opens and keeps open in the session: the member of its result, and the method that closes it. */
const opened = {
    "sourceControl/open": { member: "cursor", close: "sourceControl/close" },
    "sourceControl/watch": { member: "watch", close: "sourceControl/unwatch" },
};

/**
 * Holds the stream of events of a session, and connects again when it is lost. Each page has a port.
 *
 * A page posts {session, id, method, params}: a request with an id of its own, or a notification without; {cancel: id}; and
 * {lock}, the name of a lock that it holds as long as it lives. It receives {session}, which is null after a loss; {text}
 * with the id of its request, or without an id if it is a notification; and {id, refusal}.
 */
export class Hub {
    #session = null;
    #failures = 0;
    #source = null;
    #lastId = 0;
    #pages = new Set();
    /** By the id in the session: {page, id, method}; the page is null if it no longer waits. */
    #requests = new Map();
    #environment;

    /** `environment` has EventSource, fetch and navigator; the global object, unless a test gives another one. */
    constructor(environment = globalThis) {
        this.#environment = environment;
    }

    /** Serves a page. */
    add(port) {
        const page = { port, opened: new Map() };
        this.#pages.add(page);
        port.onmessage = ({ data }) => this.#accept(page, data);
        if (this.#source === null) this.#connect();
        else if (this.#session !== null || this.#failures > 0) port.postMessage({ session: this.#session });
    }

    #accept(page, message) {
        if (message.lock !== undefined) {
            this.#environment.navigator.locks.request(message.lock, () => this.#remove(page));
        } else if (message.cancel !== undefined) {
            for (const [id, request] of this.#requests) {
                if (request.page === page && request.id === message.cancel) this.#cancel(id, request);
            }
        } else if (message.session === this.#session) {
            this.#send(page, message);
        }
    }

    /** A page is gone: ends what it left open. */
    #remove(page) {
        this.#pages.delete(page);
        for (const [id, request] of this.#requests) {
            if (request.page === page) this.#cancel(id, request);
        }
        for (const [name, kind] of page.opened) this.#closeOpened(name, kind);
    }

    #closeOpened(name, { member, close }) {
        this.#post({ id: ++this.#lastId, method: close, params: { [member]: name } });
    }

    #cancel(id, request) {
        request.page = null;
        this.#post({ method: "$/cancelRequest", params: { id } });
    }

    #send(page, { id, method, params }) {
        const sessionId = ++this.#lastId;
        this.#requests.set(sessionId, { page, id, method });
        for (const { member, close } of Object.values(opened)) if (method === close) page.opened.delete(params[member]);
        this.#post({ id: sessionId, method, params }, (refusal) => {
            if (this.#requests.delete(sessionId)) page.port.postMessage({ id, refusal });
        });
    }

    async #post(message, refused = () => {}) {
        if (this.#session === null) return;
        try {
            const response = await this.#environment.fetch(`/messages?session=${encodeURIComponent(this.#session)}`, {
                method: "POST", headers: { "Content-Type": "application/json" },
                body: JSON.stringify({ jsonrpc: "2.0", ...message }),
            });
            if (response.ok) return;
            refused((await response.json().catch(() => null))?.error ?? `The server refused the request (${response.status}).`);
        } catch {
            // The connection is lost, which the stream of events reports, too.
        }
    }

    #connect() {
        this.#source = new this.#environment.EventSource("/events");
        this.#source.addEventListener("session", (event) => this.#begin(JSON.parse(event.data).session));
        this.#source.addEventListener("message", (event) => this.#receive(event.data));
        this.#source.addEventListener("error", () => this.#lose());
    }

    #begin(session) {
        this.#session = session;
        this.#failures = 0;
        this.#tell({ session });
    }

    #lose() {
        this.#source.close();
        const wait = RETRY_MILLISECONDS[Math.min(this.#failures++, RETRY_MILLISECONDS.length - 1)];
        setTimeout(() => this.#connect(), wait);
        if (this.#session === null && this.#failures > 1) return;
        this.#session = null;
        this.#requests.clear();
        for (const page of this.#pages) page.opened.clear();
        this.#tell({ session: null });
    }

    #tell(message) {
        for (const { port } of this.#pages) port.postMessage(message);
    }

    /** Passes a message on as text: it may be long, and the page parses it. */
    #receive(text) {
        const id = RESPONSE_ID.exec(text)?.[1];
        if (id === undefined) return this.#notify(text);
        const request = this.#requests.get(Number(id));
        if (!request) return undefined;
        this.#requests.delete(Number(id));
        const kind = opened[request.method];
        const name = kind && JSON.parse(text).result?.[kind.member];
        if (name && request.page) request.page.opened.set(name, kind);
        else if (name) this.#closeOpened(name, kind);
        request.page?.port.postMessage({ id: request.id, text });
        return undefined;
    }

    /** A notification of a watch goes to its page. */
    #notify(text) {
        const watch = JSON.parse(text).params?.watch;
        for (const page of this.#pages) {
            if (watch === undefined || page.opened.has(watch)) page.port.postMessage({ text });
        }
    }
}
