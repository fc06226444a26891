// Repeats a read whose result may be outdated.

/**
 * Returns a function that calls `read`, an asynchronous function that does not throw. Calls of `read` never overlap: a call
 * during a read makes it read once more, so that what was read last is the latest state.
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
