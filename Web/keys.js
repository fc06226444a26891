// The keys of the page, and the dialog that lists them and explains signs.
import { element } from "./elements.js";
import { address } from "./route.js";

const general = [
    ["?", "Show this list"], ["g h", "History"], ["g f", "Files of the latest commit"], ["g b", "Branches and tags"],
    ["g c", "Changes of the working copy"], ["/", "Search"], ["Alt+←, Alt+→", "Back, forward"], ["u", "Up: the list or folder"],
];
const inList = [["j, ↓ and k, ↑", "Next and previous entry"], ["Enter", "Open"], ["Page Down, Page Up, Home, End", "Scroll"]];
const inDiff = [
    ["n and p", "Next and previous file"], ["o", "Fold or unfold the file"], ["s", "Side by side or unified"], ["w", "Ignore white space"],
    ["f", "The first parent of the commit"],
];
const signs = [
    ["HEAD", "The commit that is checked out"], ["◂", "The line as it was before the commit"],
    ["⊘", "No line end at the end of the file"], ["+3 −1", "Added and deleted lines"],
    ["[U+202E]", "A character that would change the direction of text"],
    ["inspect", "git runs no program that the repository names, such as filters; with 'nebsc browse --trust' it does"],
];
const goTo = { h: ["log", []], f: ["tree", ["HEAD"]], b: ["branches", []], c: ["changes", []] };

/** Whether the repository has the view that the key after "g" opens. */
function canGo(app, key) {
    return key !== "c" || !app.repository?.isBare;
}

/** Listens to keys; those of the view come first. */
export function installKeys(app) {
    let waitsForGo = false;
    addEventListener("keydown", (event) => {
        if (event.ctrlKey || event.altKey || event.metaKey || event.defaultPrevented) return;
        if (event.target.closest?.("dialog")) return;
        if (event.target.matches?.("input, select, textarea")) {
            if (event.key === "Escape") event.target.blur(), app.view.focus?.();
            return;
        }
        const wasGo = waitsForGo;
        waitsForGo = false;
        if (wasGo && event.key in goTo && canGo(app, event.key)) location.hash = address(...goTo[event.key]);
        else if (event.key === "g") waitsForGo = true;
        else if (event.key === "?") showHelp(app);
        else if (app.view?.keys?.[event.key]) app.view.keys[event.key]();
        else return;
        event.preventDefault();
    });
    document.getElementById("help").addEventListener("click", () => showHelp(app));
}

/** Opens the dialog. */
export function showHelp(app) {
    const table = (title, rows) => [
        element("h3", {}, title),
        element("dl.keys", {}, rows.map(([keys, text]) => [element("dt", {}, keys), element("dd", {}, text)])),
    ];
    const close = element("button", { type: "button", click: () => dialog.close() }, "Close");
    const dialog = element("dialog", { "aria-labelledby": "help-title", close: () => closed() },
        element("h2", { id: "help-title" }, "Help"),
        element("p", {}, "The page shows the repository as it is, follows its changes, and changes nothing."),
        table("Keys everywhere", general.filter(([keys]) => canGo(app, keys.slice("g ".length)))), table("Keys in lists", inList),
        table("Keys in changes", inDiff), table("Signs", signs), close);
    const closed = () => {
        dialog.remove();
        // What had the focus is gone if another view was opened meanwhile.
        if (document.activeElement === document.body) app.view?.focus?.();
    };
    document.body.append(dialog);
    dialog.showModal();
}
