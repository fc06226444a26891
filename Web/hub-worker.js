// The worker that all pages of the browser share.
import { Hub } from "./hub.js";

const hub = new Hub();
addEventListener("connect", (event) => hub.add(event.ports[0]));
