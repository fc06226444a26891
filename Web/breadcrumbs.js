// The path of a file or folder as links to its folders.
import { element, visible } from "./elements.js";
import { splitPath } from "./records.js";
import { address, textOf } from "./route.js";

/** Returns a nav with a link for each folder; `revision` "" stands for the working copy and links to HEAD. */
export function breadcrumbs(revision, path) {
    const parts = [];
    for (let rest = path; rest !== "";) {
        const { folder, last } = splitPath(rest);
        parts.unshift([rest, last]);
        rest = folder;
    }
    const tree = revision || "HEAD";
    const links = parts.map(([whole, last], index) => {
        const text = element("bdi", {}, visible(textOf(last)));
        return [" / ", index === parts.length - 1 ? element("strong", {}, text)
            : element("a", { href: address("tree", [tree, ...(whole === "" ? [] : [whole])]) }, text)];
    });
    return element("nav.path", { "aria-label": "Folder" }, element("a", { href: address("tree", [tree]) }, shortRevision(tree)), links);
}

/** Whether the revision is the full id of an object. */
export function isObjectID(revision) {
    return /^[0-9a-f]{40,64}$/.test(textOf(revision));
}

/** Returns a revision as a reader writes it: 12 characters of an id, a branch without "refs/heads/". */
export function shortRevision(revision) {
    const text = visible(textOf(revision));
    return isObjectID(revision) ? text.slice(0, 12) : text.replace(/^refs\/(heads|remotes|tags)\//, "");
}
