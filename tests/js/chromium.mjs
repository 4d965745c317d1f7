// Drives Debian's Chromium without a screen through its debugging pipe: opens pages from disk, evaluates scripts in
// them, presses keys and takes pictures. The pipe is a pair of files that carry JSON texts ended by a zero byte.
import { spawn } from "node:child_process";
import { mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { inflateSync } from "node:zlib";

const patience = 60_000;

export async function launch() {
    const profile = mkdtempSync(join(tmpdir(), "linklist-chromium-"));
    const child = spawn("chromium", [
        "--headless=new", "--remote-debugging-pipe", `--user-data-dir=${profile}`, "--disable-gpu", "--no-first-run",
        "--disable-background-networking", "--disable-component-update", "--disable-sync", "--disable-extensions",
        "--force-color-profile=srgb",
        // Root has no use of the sandbox, and Chromium refuses to start for root with it.
        ...(process.getuid() === 0 ? ["--no-sandbox"] : []),
    ], { stdio: ["ignore", "ignore", "ignore", "pipe", "pipe"] });
    const browser = new Browser(child, profile);
    await browser.send("Browser.getVersion");
    return browser;
}

class Browser {
    #child;
    #profile;
    #waiting = new Map();
    #sessions = new Map();
    #lastId = 0;

    constructor(child, profile) {
        this.#child = child;
        this.#profile = profile;
        let pieces = [];
        child.stdio[4].on("data", (chunk) => {
            let from = 0;
            for (let at = chunk.indexOf(0); at >= 0; at = chunk.indexOf(0, from)) {
                pieces.push(chunk.subarray(from, at));
                this.#receive(JSON.parse(Buffer.concat(pieces).toString("utf8")));
                pieces = [];
                from = at + 1;
            }
            pieces.push(chunk.subarray(from));
        });
        const fail = (reason) => {
            for (const { reject } of this.#waiting.values())
                reject(reason);
            this.#waiting.clear();
        };
        child.on("error", fail);
        child.on("exit", (code) => fail(new Error(`Chromium ended with ${code}`)));
        child.stdio[3].on("error", fail);
    }

    send(method, params = {}, sessionId = undefined) {
        const id = ++this.#lastId;
        return new Promise((resolve, reject) => {
            const timer = setTimeout(() => {
                this.#waiting.delete(id);
                reject(new Error(`no answer to ${method}`));
            }, patience);
            const settle = (end) => (value) => { clearTimeout(timer); end(value); };
            this.#waiting.set(id, { resolve: settle(resolve), reject: settle(reject) });
            this.#child.stdio[3].write(JSON.stringify({ id, method, params, sessionId }) + "\0");
        });
    }

    #receive({ id, result, error, method, params, sessionId }) {
        const waiting = this.#waiting.get(id);
        this.#waiting.delete(id);
        if (waiting && error)
            waiting.reject(new Error(error.message));
        else if (waiting)
            waiting.resolve(result);
        else if (method)
            this.#sessions.get(sessionId)?.hear(method, params);
    }

    // A tab of its own, with the page loaded.
    async open(url, { width = 800, height = 600, mobile = false } = {}) {
        const { targetId } = await this.send("Target.createTarget", { url: "about:blank" });
        const { sessionId } = await this.send("Target.attachToTarget", { targetId, flatten: true });
        const page = new Page(this, sessionId, targetId);
        this.#sessions.set(sessionId, page);
        await Promise.all(["Page", "Runtime", "Log"].map((domain) => page.send(`${domain}.enable`)));
        await page.send("Emulation.setFocusEmulationEnabled", { enabled: true });
        await page.load(url, { width, height, mobile });
        return page;
    }

    async close() {
        const ended = new Promise((resolve) => this.#child.on("exit", resolve));
        this.send("Browser.close").catch(() => {});
        const timer = setTimeout(() => this.#child.kill("SIGKILL"), 10_000);
        await ended;
        clearTimeout(timer);
        rmSync(this.#profile, { recursive: true, force: true, maxRetries: 10 });
    }
}

class Page {
    #browser;
    #session;
    #target;
    #onLoad = () => {};
    dialogs = []; // every alert, confirm, prompt
    exceptions = []; // uncaught in the page's scripts
    refusals = []; // what the content security policy forbade

    constructor(browser, session, target) {
        this.#browser = browser;
        this.#session = session;
        this.#target = target;
    }

    send(method, params) { return this.#browser.send(method, params, this.#session); }

    hear(method, params) {
        if (method === "Page.loadEventFired")
            this.#onLoad();
        if (method === "Page.javascriptDialogOpening") {
            this.dialogs.push(params.message);
            this.send("Page.handleJavaScriptDialog", { accept: false }).catch(() => {});
        }
        if (method === "Runtime.exceptionThrown")
            this.exceptions.push(params.exceptionDetails.exception?.description ?? params.exceptionDetails.text);
        if (method === "Log.entryAdded" && params.entry.source === "security")
            this.refusals.push(params.entry.text);
    }

    // Loads the page and begins to note what it does afresh; without a size the tab keeps its own.
    async load(url, { width, height, mobile = false } = {}) {
        if (width)
            await this.send("Emulation.setDeviceMetricsOverride", { width, height, deviceScaleFactor: 1, mobile });
        this.dialogs = [];
        this.exceptions = [];
        this.refusals = [];
        const loaded = new Promise((resolve) => { this.#onLoad = resolve; });
        const { errorText } = await this.send("Page.navigate", { url });
        if (errorText)
            throw new Error(`${url}: ${errorText}`);
        await loaded;
    }

    // The expression's value, under the page's own content security policy; promises are awaited.
    async evaluate(expression) {
        const { result, exceptionDetails } = await this.send("Runtime.evaluate", {
            expression, returnByValue: true, awaitPromise: true, allowUnsafeEvalBlockedByCSP: false,
        });
        if (exceptionDetails)
            throw new Error(exceptionDetails.exception?.description ?? exceptionDetails.text);
        return result.value;
    }

    // Until two pictures have been painted.
    painted() {
        return this.evaluate("new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(() => done())))");
    }

    async press(key, { code = key, text = undefined, keyCode = 0 } = {}) {
        const event = { key, code, text, windowsVirtualKeyCode: keyCode };
        await this.send("Input.dispatchKeyEvent", { type: text ? "keyDown" : "rawKeyDown", ...event });
        await this.send("Input.dispatchKeyEvent", { type: "keyUp", ...event });
    }

    // PNG bytes of what a reader sees.
    async screenshot() {
        await this.painted();
        const { data } = await this.send("Page.captureScreenshot", { format: "png" });
        return Buffer.from(data, "base64");
    }

    // What a screen reader is told: role, name and level of each node that is not ignored, in no order.
    async accessibility() {
        await this.send("Accessibility.enable"); // not before: it makes long pages slow
        const { nodes } = await this.send("Accessibility.getFullAXTree");
        return nodes.filter((node) => !node.ignored).map((node) => ({
            role: node.role?.value,
            name: node.name?.value ?? "",
            level: node.properties?.find((property) => property.name === "level")?.value.value,
        }));
    }

    async close() { await this.#browser.send("Target.closeTarget", { targetId: this.#target }); }
}

// PNG's fourth filter: the neighbour that is closest to left + above - corner.
function nearest(left, above, corner) {
    const byLeft = Math.abs(above - corner);
    const byAbove = Math.abs(left - corner);
    const byCorner = Math.abs(left + above - 2 * corner);
    return byLeft <= byAbove && byLeft <= byCorner ? left : byAbove <= byCorner ? above : corner;
}

// The picture in a PNG of eight bits a channel without interlacing, as Chromium writes it.
export function picture(png) {
    const width = png.readUInt32BE(16);
    const height = png.readUInt32BE(20);
    const channels = { 2: 3, 6: 4 }[png[25]];
    const parts = [];
    for (let at = 8; at < png.length; at += 12 + png.readUInt32BE(at)) {
        if (png.toString("latin1", at + 4, at + 8) === "IDAT")
            parts.push(png.subarray(at + 8, at + 8 + png.readUInt32BE(at)));
    }
    const lines = inflateSync(Buffer.concat(parts));
    const stride = width * channels;
    const pixels = Buffer.alloc(height * stride);
    for (let y = 0; y < height; ++y) {
        const filter = lines[y * (stride + 1)];
        for (let x = 0; x < stride; ++x) {
            const a = x >= channels ? pixels[y * stride + x - channels] : 0;
            const b = y > 0 ? pixels[(y - 1) * stride + x] : 0;
            const c = x >= channels && y > 0 ? pixels[(y - 1) * stride + x - channels] : 0;
            const predicted = filter === 0 ? 0 : filter === 1 ? a : filter === 2 ? b : filter === 3 ? (a + b) >> 1
                : nearest(a, b, c);
            pixels[y * stride + x] = lines[y * (stride + 1) + 1 + x] + predicted;
        }
    }
    const at = (x, y) => [...pixels.subarray((y * width + x) * channels, (y * width + x) * channels + 3)];
    return { width, height, at };
}
