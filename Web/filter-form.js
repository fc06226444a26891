// The form above the history: what to search for, and which commits.
import { element, show, visible } from "./elements.js";
import { isRemoteHead, nameIn, record, request, shortReference, Type } from "./records.js";
import { address, textOf } from "./route.js";

const kinds = [["message", "Message"], ["author", "Author"], ["content", "Content"]];
const MAX_REFERENCES = 1000;

/**
 * Returns {node, focus, refresh} for the values of an address; submitting it goes to another address. `refresh()` reads the
 * references for the list of branches, and resolves to their names and objects, as one text; empty if they cannot be read.
 */
export function filterForm(app, values) {
    const kind = element("select", { "aria-label": "Search in" },
        kinds.map(([value, label]) => element("option", { value, selected: Boolean(values[value]) }, label)));
    const given = kinds.map(([name]) => values[name]).find(Boolean) ?? "";
    const input = (type, label, value, more = {}) =>
        element("input", { type, value: value && textOf(value), "aria-label": label, placeholder: label, ...more });
    const text = input("search", "Search", given);
    const path = input("text", "Path", values.path, { placeholder: "File or folder" });
    const since = input("date", "Since", values.since, { title: "Since" });
    const until = input("date", "Until", values.until, { title: "Until" });
    const branch = element("select", { "aria-label": "Branch" });
    const names = new Map();
    const refresh = () => fillBranches(app, branch, names, values.branch);
    const go = (event) => {
        event?.preventDefault();
        const isSamePath = path.value === (values.path ? textOf(values.path) : "");
        location.hash = address("log", [], {
            [kind.value]: text.value, path: isSamePath ? values.path : path.value, since: since.value, until: until.value,
            branch: names.get(branch.value) ?? branch.value, follow: isSamePath && path.value ? values.follow : "",
        });
        // The reader may come back to this view, which shows what its address says.
        node.reset();
    };
    branch.addEventListener("change", () => go());
    const isFiltered = Boolean(values.path || values.since || values.until);
    const more = element("details.more", { open: isFiltered }, element("summary", {}, "Filter"),
        element("div.fields", {}, path, element("label", {}, "since ", since), element("label", {}, "until ", until)));
    const clear = given || isFiltered || values.branch
        ? element("a.button", { href: address("log") }, "Clear") : null;
    const node = element("form.filters", { role: "search", submit: go, "aria-label": "Search in the history" },
        branch, element("span.search", {}, kind, text), element("button", { type: "submit" }, "Search"), more, clear);
    return { node, refresh, focus: () => text.select() };
}

async function fillBranches(app, select, names, chosen) {
    const chosenText = chosen ? textOf(chosen) : "";
    const option = (value, label) => element("option", { value, selected: value === chosenText }, label);
    const fill = (groups) => show(select, option("", "Current branch"), option("*", "All branches"),
        chosenText && chosenText !== "*" && !names.has(chosenText) ? option(chosenText, visible(chosenText)) : null, groups);
    fill([]);
    try {
        const { result } = await app.connection.perform({ ...request(Type.references), background: true });
        names.clear();
        const groups = { branch: [], remote: [], tag: [], other: [] };
        for (const entry of record(result).filter((one) => !isRemoteHead(one.name)).slice(0, MAX_REFERENCES)) {
            names.set(entry.name, nameIn(entry, "name"));
            const { name, kind } = shortReference(entry.name);
            groups[kind].push(option(entry.name, visible(name)));
        }
        const label = { branch: "Branches", remote: "Remote branches", tag: "Tags", other: "Other" };
        fill(Object.keys(groups).filter((kind) => groups[kind].length)
            .map((kind) => element("optgroup", { label: label[kind] }, groups[kind])));
        return record(result).map(({ name, objectID }) => `${name} ${objectID}`).join("\n");
    } catch {
        // The list of commits reports the same error.
        return "";
    }
}
