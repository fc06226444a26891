// Errors as everywhere in nebsc: a sentence, advice, and the text of git.
import { element, visible } from "./elements.js";

/** Advice by class of error for a reader, where that of nebsc is for someone who changes files. */
const advice = {
    "file-type-wrong": "Go back, and choose another entry. A submodule has a repository of its own: 'nebsc browse' in its folder shows it.",
};

/** Returns an element that shows the error. */
export function errorElement(error) {
    const { localizedDescription, localizedRecoverySuggestion, text } = error.outcomeError ?? {};
    const sentence = localizedDescription ?? error.message;
    const suggestion = advice[error.outcomeError?.class] ?? localizedRecoverySuggestion;
    const details = text && text.trim() !== sentence
        ? element("details", {}, element("summary", {}, "What git printed"), element("pre", { tabindex: "0" }, text))
        : null;
    return element("div.error", { role: "alert" }, element("p.sentence", {}, visible(sentence)),
        suggestion ? element("p.advice", {}, suggestion) : null, details);
}
