// A commit: message, people, parents, and its files with their changes.
import { count, element, referenceElement, show, visible } from "./elements.js";
import { errorElement } from "./errors.js";
import { countsElement, FileList, loadChanges, pathsOf } from "./file-list.js";
import { isRemoteHead, nameIn, record, request, Type } from "./records.js";
import { address } from "./route.js";
import { fullTime, relativeTime } from "./time.js";

const EMPTY_TREES = {
    40: "4b825dc642cb6eb9a060e54bf8d69288fbee4904",
    64: "6ef19b41225c5369f1c104d45d8d85efa9b057b53b14b4b9b939dd74decc5321",
};
/** A longer subject scrolls. */
const LONG_SUBJECT = 500;
let splits = false;

export function openCommit(app, [id], values) {
    return new CommitView(app, id, values);
}

class CommitView {
    constructor(app, id, values) {
        Object.assign(this, { app, id, values });
        this.title = `Commit ${visible(String(id)).slice(0, 12)}`;
        this.node = element("article.page.commit-view", { tabindex: "0", "aria-label": this.title },
            element("h1", {}, this.title), element("p.remark", {}, "Loading…"));
        this.scroller = this.node;
        this.keys = {
            n: () => this.files?.move(1), p: () => this.files?.move(-1), o: () => this.files?.toggleCurrent(),
            s: () => this.#setSplit(!splits), w: () => { location.hash = this.#address({ white: values.white ? "" : "1" }); },
            f: () => { if (this.parents?.length) location.hash = address("commit", [this.parents[0]]); },
            u: () => { location.hash = address("log"); },
        };
        this.#load();
    }

    focus() {
        this.node.focus({ preventScroll: true });
    }

    #address(values) {
        return address("commit", [this.id], { ...this.values, ...values });
    }

    async #load() {
        try {
            const { result } = await this.app.connection.perform(request(Type.history,
                { startingRevision: this.id }, { LogOutputLimit: 1, LogOutputFilesChanged: true, LineCounts: true }));
            await this.#show(record(result)[0]);
        } catch (error) {
            show(this.node, element("h1", {}, this.title), errorElement(error),
                element("p", {}, element("a.button", { href: address("log") }, "Go to the history")));
        }
    }

    async #show(commit) {
        this.parents = commit.parents ?? [];
        const number = Math.min(Math.max(1, Number(this.values.parent) || 1), Math.max(1, this.parents.length));
        this.base = this.parents[number - 1] ?? EMPTY_TREES[commit.objectID.length];
        this.commit = commit;
        const files = number === 1 ? commit.changes ?? [] : await loadChanges(this.app, this.#request([]));
        this.app.title(this, `${commit.subject ?? ""} – ${commit.objectID.slice(0, 12)}`);
        this.files = new FileList(this.app, files, {
            load: (some) => loadChanges(this.app, this.#request(pathsOf(some))),
            images: (file) => this.#images(file), links: (file) => this.#links(file), opens: !this.values.file,
        });
        this.files.setSplit(splits);
        show(this.node, this.#heading(commit), this.#summary(files, number), this.files.node);
        if (this.values.file) this.files.reveal(this.values.file);
    }

    #request(files) {
        return request(Type.changes, { startingRevision: this.base, endingRevision: this.commit.objectID, files },
            { IgnoreWhiteSpace: Boolean(this.values.white) });
    }

    #images(file) {
        const path = nameIn(file, "path");
        const sources = [];
        if (file.state !== "added") {
            sources.push({ path: nameIn(file, "originalPath") ?? path, source: { revision: this.base }, caption: "Before" });
        }
        if (file.state !== "deleted") sources.push({ path, source: { revision: this.commit.objectID }, caption: "After" });
        return sources;
    }

    #links(file) {
        const path = nameIn(file, "path");
        const revision = file.state === "deleted" ? this.base : this.commit.objectID;
        return [
            element("a", { href: address("file", [revision, path]), "aria-label": `File ${visible(file.path)}` }, "File"),
            element("a", { href: address("log", [], { branch: revision, path, follow: "1" }),
                "aria-label": `History of ${visible(file.path)}` }, "History"),
        ];
    }

    #heading(commit) {
        const person = (name, mail, time, offset) => element("dd", {}, element("bdi", {}, visible(name ?? "")),
            element("span.mail", {}, ` <${visible(mail ?? "")}>`), " ",
            element("time", {}, fullTime(time, offset)), ` (${relativeTime(time)})`);
        const isSamePerson = commit.author === commit.committer && commit.authorEmail === commit.committerEmail;
        const committed = isSamePerson
            ? commit.authorTime !== commit.committerTime && [element("dt", {}, "Committed"),
                element("dd", {}, fullTime(commit.committerTime, commit.committerTimeOffset), ` (${relativeTime(commit.committerTime)})`)]
            : [element("dt", {}, "Committer"),
                person(commit.committer, commit.committerEmail, commit.committerTime, commit.committerTimeOffset)];
        const references = (commit.references ?? []).filter((name) => !isRemoteHead(name)).map((name) =>
            element("a", { href: address("log", [], { branch: name }) }, referenceElement(name)));
        const subject = visible(commit.subject ?? "(no message)");
        const isLong = subject.length > LONG_SUBJECT;
        return element("header", {}, element(isLong ? "h1.long" : "h1", { tabindex: isLong && "0" }, element("bdi", {}, subject)),
            commit.body ? element("pre.message", { tabindex: "0", role: "group", "aria-label": "Message" }, commit.body.trim()) : null,
            element("dl.facts", {},
                element("dt", {}, "Commit"), element("dd", {}, element("code", {}, commit.objectID), " ", this.#copyButton(),
                    references),
                element("dt", {}, "Author"),
                person(commit.author, commit.authorEmail, commit.authorTime, commit.authorTimeOffset),
                committed,
                this.parents.length ? this.#parents() : null));
    }

    #parents() {
        return [element("dt", {}, this.parents.length > 1 ? "Parents" : "Parent"),
            element("dd", {}, this.parents.map((parent) =>
                [element("a", { href: address("commit", [parent]) }, element("code", {}, parent.slice(0, 12))), " "]))];
    }

    #copyButton() {
        const button = element("button", { type: "button", click: async () => {
            await navigator.clipboard.writeText(this.commit.objectID).then(
                () => { button.textContent = "Copied"; }, () => { button.textContent = "Not copied"; });
        } }, "Copy");
        return button;
    }

    #summary(files, number) {
        const sum = (key) => files.reduce((total, file) => total + (file[key] ?? 0), 0);
        this.splitButton = element("button", { type: "button", "aria-pressed": splits, click: () => this.#setSplit(!splits) },
            "Side by side");
        const white = element("a.button", { href: this.#address({ white: this.values.white ? "" : "1" }) },
            this.values.white ? "Show white space" : "Ignore white space");
        const bases = this.parents.length > 1 ? this.parents.map((parent, index) => index + 1 === number
            ? element("strong", {}, ` parent ${index + 1}`)
            : element("a", { href: this.#address({ parent: index + 1 }) }, ` parent ${index + 1}`)) : null;
        return element("div.summary", {}, element("span", {}, count(files.length, "file"), " "),
            countsElement({ addedLines: sum("addedLines"), deletedLines: sum("deletedLines") }),
            bases ? element("span", {}, "Compared with", bases) : null, element("span.tools", {}, this.splitButton, white),
            element("a.button", { href: address("tree", [this.commit.objectID]) }, "All files"));
    }

    #setSplit(split) {
        splits = split;
        this.files?.setSplit(split);
        this.splitButton?.setAttribute("aria-pressed", split);
    }
}
