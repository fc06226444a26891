// A row of the history.
import { element, referenceElement, show, visible } from "./elements.js";
import { isRemoteHead } from "./records.js";
import { textOf } from "./route.js";
import { dateTime } from "./time.js";

const MAX_REFERENCES = 4;

/** The elements of a row, which shows one commit after the other: to change a text takes less time than to create elements. */
export class CommitRow {
    #texts = Array.from({ length: 5 }, () => document.createTextNode(""));
    #references = element("span.refs", {});
    #hasReferences = false;

    constructor(node) {
        const [subject, path, author, day, clock] = this.#texts;
        show(node, element("span.subject", {}, this.#references, element("bdi", {}, subject), element("span.path", {}, path)),
            element("span.author", {}, element("bdi", {}, author)), element("time", {}, day, element("span.clock", {}, clock)));
    }

    clear() {
        this.#setTexts(["", "", "", "", ""]);
        this.#setReferences([]);
    }

    /** Shows a row of history.js, and the path unless it is undefined. */
    fill(row, path) {
        const time = dateTime(row.time, row.offset);
        const space = time.indexOf(" ");
        this.#setTexts([visible(row.subject) || "(no message)", path ? visible(textOf(path)) : "", visible(row.author),
            time.slice(0, space), time.slice(space)]);
        this.#setReferences(row.references.length || row.isHead ? referencesOf(row) : []);
    }

    #setTexts(texts) {
        texts.forEach((text, index) => { if (this.#texts[index].data !== text) this.#texts[index].data = text; });
    }

    #setReferences(references) {
        if (references.length || this.#hasReferences) show(this.#references, references);
        this.#hasReferences = references.length > 0;
    }
}

function referencesOf(row) {
    const names = row.references.filter((name) => !isRemoteHead(name));
    const more = names.length - MAX_REFERENCES;
    return [row.isHead ? element("span.ref.head", {}, "HEAD") : null, names.slice(0, MAX_REFERENCES).map(referenceElement),
        more > 0 ? element("span.ref.other", {}, `+${more}`) : null];
}
