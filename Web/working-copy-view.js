// The working copy: staged, unstaged and untracked changes, and conflicts, as they are now.
import { element, show, visible } from "./elements.js";
import { errorElement } from "./errors.js";
import { FileList, loadChanges, pathsOf } from "./file-list.js";
import { readingLatest } from "./latest.js";
import { nameIn, record, request, Type } from "./records.js";
import { address } from "./route.js";
import { loadUntracked } from "./untracked.js";

/** So many changed files are unfolded when the view opens. */
const OPEN_FILES = 10;

const groups = [
    ["Conflicts", (entry) => entry.kind === "conflict" ? entry.conflict : null],
    ["Staged", (entry) => entry.indexState], ["Not staged", (entry) => entry.workingTreeState],
    ["Untracked", (entry) => entry.kind === "untracked" ? "untracked" : null],
];

/** What happened to a file in conflict whose working copy is as on our side, or that our side lacks; no line shows it. */
const conflictRemarks = {
    "both modified": "Both sides changed the file. The working copy is as on our side.",
    "both added": "Both sides added the file. The working copy is as on our side.",
    "both deleted": "Both sides deleted the file or gave it another name.",
    "deleted by them": "Their side deleted the file; our side changed it. The working copy is as on our side.",
    "deleted by us": "Our side deleted the file; their side changed it.",
    "added by us": "Only our side has the file, under this name.",
    "added by them": "Only their side has the file, under this name.",
};
const conflictHelp = "Our side is HEAD; their side is what is merged or applied. Lines are compared with our side. To resolve a conflict, "
    + "edit the file, then run 'git add' with its name; 'git rm' deletes it.";

export function openWorkingCopy(app) {
    return new WorkingCopyView(app);
}

class WorkingCopyView {
    title = "Changes";
    #load = readingLatest(() => this.#read());
    #shown = "";
    #lists = [];
    #isFirst = true;

    constructor(app) {
        this.app = app;
        this.body = element("div", { "aria-live": "off" }, element("p.remark", {}, "Loading…"));
        this.status = element("p.branch-line", { role: "status" });
        this.node = element("article.page.changes", { tabindex: "0", "aria-label": this.title },
            element("h1", {}, this.title), this.status, this.body);
        this.scroller = this.node;
        const current = () => this.#lists.find((list) => list.node.contains(document.activeElement)) ?? this.#lists[0];
        this.keys = {
            n: () => this.#move(1), p: () => this.#move(-1), o: () => current()?.toggleCurrent(),
            s: () => this.#lists.forEach((list) => list.setSplit(!list.split)),
        };
        this.#load();
    }

    focus() {
        this.node.focus({ preventScroll: true });
    }

    changed() {
        this.#load();
    }

    #move(step) {
        const buttons = [...this.node.querySelectorAll("button.file")];
        const index = buttons.indexOf(document.activeElement);
        buttons[Math.max(0, Math.min(index + step, buttons.length - 1))]?.focus();
    }

    async #read() {
        try {
            const [state, operation] = await Promise.all([Type.state, Type.operation].map((type) =>
                this.app.connection.perform({ ...request(type, {}, type === Type.state ? { UntrackedFiles: "all" } : {}), background: true })));
            await this.#show(record(state.result), record(operation.result ?? []));
        } catch (error) {
            this.#shown = "";
            show(this.status);
            show(this.body, errorElement(error));
        }
    }

    /** Shows the state; resolves when the files that were unfolded are unfolded again. */
    async #show(state, operations) {
        const head = state.find((entry) => entry.kind === "head") ?? {};
        const entries = state.filter((entry) => entry.kind !== "head");
        show(this.status, this.#headText(head), operations.filter((entry) => entry.kind !== "conflict").map(operationElement));
        const current = JSON.stringify(entries);
        if (current === this.#shown) {
            await Promise.all(this.#lists.map((list) => list.refresh()));
            return;
        }
        const opened = this.#openFiles();
        const focused = document.activeElement?.closest?.("section.changed-file, section.group");
        const focusKey = focused && this.node.contains(focused) ? keyOf(focused) : null;
        this.#shown = current;
        this.#lists = [];
        this.opens = this.#isFirst && entries.length <= OPEN_FILES;
        this.#isFirst = false;
        const sections = groups.map(([title, stateOf]) => this.#group(title, stateOf, entries)).filter(Boolean);
        // The reader's place stays while the changes of files are on their way.
        this.body.style.minHeight = `${this.body.offsetHeight}px`;
        show(this.body, sections.length ? sections : element("p.remark", {}, head.objectID === undefined
            ? "There are no commits yet, and no files to commit." : "Nothing to commit: the working copy is as in the latest commit."));
        const unfolded = this.#reopen(opened, focusKey);
        await Promise.all([...unfolded, ...this.#lists.map((list) => list.opened)]);
        this.body.style.minHeight = "";
    }

    #openFiles() {
        return this.#lists.flatMap((list) => list.sections.filter((section) => section.isOpen).map((section) => keyOf(section.node)));
    }

    /** Returns promises of the sections that it unfolds. */
    #reopen(opened, focusKey) {
        const unfolded = [];
        for (const list of this.#lists) {
            for (const section of list.sections) {
                if (opened.includes(keyOf(section.node))) unfolded.push(section.toggle());
                if (keyOf(section.node) === focusKey) section.button.focus({ preventScroll: true });
            }
        }
        return unfolded;
    }

    #headText(head) {
        const parts = [head.name === undefined ? `Detached HEAD at ${head.objectID?.slice(0, 12)}` : `Branch ${visible(head.name)}`];
        if (head.upstream) parts.push(`upstream ${visible(head.upstream)}`);
        if (head.ahead) parts.push(`${head.ahead} ahead`);
        if (head.behind) parts.push(`${head.behind} behind`);
        if (head.stashCount) parts.push(`${head.stashCount} stashed`);
        return element("span", {}, parts.join(", "));
    }

    #group(title, stateOf, entries) {
        const files = entries.filter(stateOf).map((entry) => ({ ...entry, label: stateOf(entry) }));
        if (files.length === 0) return null;
        const heading = element("h2", {}, `${title} (${files.length.toLocaleString("en")})`);
        const list = new FileList(this.app, files,
            { ...(title === "Untracked" ? untracked : this.#tracked(title === "Staged")), opens: this.opens });
        this.#lists.push(list);
        const help = title === "Conflicts" ? element("p.remark", {}, conflictHelp) : null;
        return element("section.group", { "aria-label": title }, heading, help, list.node);
    }

    /** How a list of tracked files reads their changes. */
    #tracked(isStaged) {
        return {
            load: async (some) => [...await loadChanges(this.app,
                { ...request(Type.changes, { files: pathsOf(some) }, { Staged: isStaged }), background: true }), ...remarksOn(some)],
            images: (file) => imagesOf(file, isStaged), links: linksOf,
        };
    }
}

/** Returns records for the files in conflict, which stand behind those with lines. */
function remarksOn(files) {
    return files.filter((file) => file.kind === "conflict")
        .map(({ path, pathBytes, conflict }) => ({ path, pathBytes, remark: conflictRemarks[conflict] }));
}

/** How a list of untracked files reads them. */
const untracked = {
    load: loadUntracked,
    images: (file) => [{ path: nameIn(file, "path"), source: { isWorkingCopy: true }, caption: "Untracked" }],
};

/** Names a file within its group. */
function keyOf(node) {
    return `${node.closest("section.group")?.getAttribute("aria-label")}/${node.getAttribute("aria-label")}`;
}

function operationElement(entry) {
    const step = entry.step ? `, step ${entry.step} of ${entry.stepCount}` : "";
    return element("strong.operation", {}, `A ${entry.kind} is under way${step}`);
}

function imagesOf(file, staged) {
    const path = nameIn(file, "path");
    const original = nameIn(file, "originalPath") ?? path;
    if (file.kind === "conflict") {
        const captions = { 1: "Ancestor", 2: "Ours", 3: "Theirs" };
        return (file.stages ?? []).map(({ stage }) => ({ path, source: { stage }, caption: captions[stage] }));
    }
    const before = staged ? { path: original, source: { revision: "HEAD" }, caption: "Latest commit" }
        : { path: file.label === "renamed" ? original : path, source: { stage: 0 }, caption: "Staged" };
    const after = staged ? { path, source: { stage: 0 }, caption: "Staged" }
        : { path, source: { isWorkingCopy: true }, caption: "Working copy" };
    return [...(file.label === "added" ? [] : [before]), ...(file.label === "deleted" ? [] : [after])];
}

function linksOf(file) {
    const path = nameIn(file, "path");
    if (file.label === "added" || file.label === "deleted") return [];
    return [
        element("a", { href: address("file", ["", path]), "aria-label": `File ${visible(file.path)}` }, "File"),
        element("a", { href: address("log", [], { path, follow: "1" }), "aria-label": `History of ${visible(file.path)}` }, "History"),
    ];
}
