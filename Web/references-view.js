// Branches, remote branches and tags.
import { dateElement, element, referenceElement, show, visible } from "./elements.js";
import { ListView } from "./list-view.js";
import { isRemoteHead, nameIn, record, request, shortReference, Type } from "./records.js";
import { address } from "./route.js";

const title = "Branches and tags";

export function openReferences(app) {
    return new ReferencesView(app);
}

class ReferencesView extends ListView {
    constructor(app) {
        const search = element("input", { type: "search", "aria-label": "Filter by name", placeholder: "Filter by name",
            input: () => {
                const text = search.value.toLowerCase();
                this.filter((entry) => entry.name.toLowerCase().includes(text));
            } });
        super(app, "references", { title, label: title, emptyRemark: "The repository has no branches yet." }, search);
        this.keys = { "/": () => search.focus() };
        this.load();
    }

    async read() {
        const { result } = await this.app.connection.perform({ ...request(Type.references), background: true });
        return record(result).filter((entry) => !isRemoteHead(entry.name));
    }

    addressOf(entry) {
        return address("log", [], { branch: nameIn(entry, "name") });
    }

    fill(node, entry) {
        const { kind } = shortReference(entry.name);
        const notes = [entry.isCurrent ? "current" : "", entry.ahead ? `${entry.ahead} ahead` : "",
            entry.behind ? `${entry.behind} behind` : "", entry.upstreamIsGone ? "upstream is gone" : ""].filter(Boolean);
        show(node, element("span.subject", {}, referenceElement(entry.name),
            notes.length ? element("span.path", {}, notes.join(", ")) : null, element("bdi", {}, visible(entry.subject || (kind === "tag" ? "" : "(no message)")))),
        element("span.author", {}, kind === "remote" ? "remote branch" : kind),
        entry.time === undefined ? null : dateElement(entry.time, entry.timeOffset));
    }
}
