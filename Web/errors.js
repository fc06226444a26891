// Errors as everywhere in nebsc: a sentence, advice, and the text of git.
import { element, visible } from "./elements.js";

/** Returns an element that shows the error. */
export function errorElement(error) {
    const { localizedDescription, localizedRecoverySuggestion, text } = error.outcomeError ?? {};
    const sentence = localizedDescription ?? error.message;
    const details = text && text.trim() !== sentence
        ? element("details", {}, element("summary", {}, "What git printed"), element("pre", { tabindex: "0" }, text))
        : null;
    return element("div.error", { role: "alert" }, element("p.sentence", {}, visible(sentence)),
        localizedRecoverySuggestion ? element("p.advice", {}, localizedRecoverySuggestion) : null, details);
}
