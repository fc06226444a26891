// Dates as text. Pure functions. Times are seconds since 1970, offsets minutes east of UTC.

const steps = [[60, "second"], [60, "minute"], [24, "hour"], [30.44, "day"], [12, "month"], [Infinity, "year"]];

/** Returns "2026-03-04 05:06" in the time zone of the offset; "" for a time that no calendar has. */
export function dateTime(seconds, offset = 0) {
    const date = new Date((seconds + offset * 60) * 1000);
    return Number.isNaN(date.getTime()) ? "" : date.toISOString().replace("T", " ").replace(/:\d\d\.\d+Z$/, "");
}

/** Returns "2026-03-04 05:06 +0100". */
export function fullTime(seconds, offset = 0) {
    const minutes = Math.abs(offset);
    const two = (number) => String(number).padStart(2, "0");
    const text = dateTime(seconds, offset);
    return text && `${text} ${offset < 0 ? "-" : "+"}${two(Math.floor(minutes / 60))}${two(minutes % 60)}`;
}

/** Returns "3 days ago" or "in 2 hours". */
export function relativeTime(seconds, now = Date.now() / 1000) {
    let amount = Math.abs(now - seconds);
    let unit = "second";
    for (const [size, name] of steps) {
        unit = name;
        if (amount < size) break;
        amount /= size;
    }
    const count = Math.floor(amount);
    const text = `${count} ${unit}${count === 1 ? "" : "s"}`;
    if (unit === "second" && count < 10) return "just now";
    return seconds > now ? `in ${text}` : `${text} ago`;
}
