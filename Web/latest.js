// Reading what may change meanwhile.

/**
 * Returns a function that calls `read`, an asynchronous function that does not throw, never twice at the same time: a call
 * during another one lets it read once more at its end, so that what was read last is the latest state.
 */
export function readingLatest(read) {
    let isReading = false;
    let isOutdated = false;
    return async () => {
        isOutdated = true;
        if (isReading) return;
        isReading = true;
        while (isOutdated) {
            isOutdated = false;
            await read();
        }
        isReading = false;
    };
}
