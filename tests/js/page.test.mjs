// The player's page in Chromium, from disk as a reader opens it: in the sample book, published by the host in a session
// that ends with OK ("book"), and in a workspace beside config.js ("plain"). LINKLIST_BUILD names the build folder.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { cpSync, mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { createServer } from "node:net";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { after, before, test } from "node:test";
import { fileURLToPath, pathToFileURL } from "node:url";
import { launch, picture } from "./chromium.mjs";
import { unscramble } from "./unscramble.mjs";

const source = (path) => fileURLToPath(new URL(`../../${path}`, import.meta.url));
const build = process.env.LINKLIST_BUILD ?? source("build/dev");
const pageFacts = readFileSync(source("tests/js/pageFacts.js"), "utf8");
const words = {
    unpublished: "No link list has been published yet.",
    unconfigured: "There is no configuration to show yet.",
    damaged: "The link list’s configuration is damaged.",
    incomplete: "Part of the configuration is damaged or missing.",
    noRoom: "The margins leave no room for the box.",
};
const kinds = ["book", "plain"];
const desktop = { width: 1000, height: 900 };

let browser;
let tab;
let folder;
let listener;
let port;
const heard = []; // the first line of whatever reaches the listener

before(async () => {
    folder = mkdtempSync(join(tmpdir(), "linklist-page-"));
    listener = createServer((socket) => {
        const index = heard.push("a connection") - 1;
        socket.on("error", () => {});
        socket.once("data", (data) => {
            heard[index] = data.toString("latin1").split("\r\n")[0];
            socket.end("HTTP/1.0 404 None\r\n\r\n");
        });
    });
    await new Promise((done) => listener.listen(0, "127.0.0.1", done));
    port = listener.address().port;
    browser = await launch();
    tab = await browser.open("about:blank");
});

after(async () => {
    await browser?.close();
    listener?.close();
    rmSync(folder, { recursive: true, force: true });
});

let lastName = 0;
function makeFolder() {
    const path = join(folder, String(++lastName));
    mkdirSync(path);
    return path;
}

function escaped(text) {
    return text.replaceAll("&", "&amp;").replaceAll("<", "&lt;").replaceAll(">", "&gt;");
}

function linkList({ heading = "Further reading", headingSize = 16, headingColor = "0x7A2E1F", bodySize = 12,
    bodyColor = "0x1F4E79", items = [], foreign = "" }) {
    const leaf = (name, type, text) => `<${name} type="${type}">${escaped(String(text))}</${name}>`;
    const basic = ["left", "top", "width", "height"].map((side) => leaf(side, "text", "0%")).join("");
    const list = items.map(({ link, title }) =>
        `<item>${leaf("link", "text", link)}${leaf("title", "text", title)}</item>`).join("");
    return `<info>${leaf("opacity", "number", 1)}${leaf("layout", "number", 1)}<properties><basic>${basic}</basic>`
        + `<extended><title>${leaf("content", "text", heading)}${leaf("fontSize", "number", headingSize)}`
        + `${leaf("color", "color", headingColor)}</title><body>${leaf("fontSize", "number", bodySize)}`
        + `${leaf("color", "color", bodyColor)}<content>${list}</content></body>${foreign}</extended></properties>`
        + "</info>";
}

// A preview page beside that config.js; none without a text.
function plainPage(configuration) {
    const path = makeFolder();
    cpSync(join(build, "linklist.bundle/Contents/Resources/html"), path, { recursive: true });
    rmSync(join(path, "config.js"));
    if (configuration !== undefined)
        writeFileSync(join(path, "config.js"), configuration);
    return pathToFileURL(join(path, "index.html")).href;
}

// The sample book with what a real session publishes from that document and place, and the page with the same
// configuration in plain. Both pages of a test share one publication.
const publications = new Map();
function publish(list, place = [10, 26, 60, 26, 0, 1]) {
    const key = JSON.stringify([list, place]);
    if (!publications.has(key))
        publications.set(key, publishAfresh(list, place));
    return publications.get(key);
}

function publishAfresh(list, place) {
    const path = makeFolder();
    const book = join(path, "book");
    const workspace = join(path, "workspace");
    mkdirSync(workspace);
    writeFileSync(join(workspace, "linklist.xml"), linkList(list));
    writeFileSync(join(workspace, "settings.dat"), place.join("\n"));
    cpSync(source("host/sample-book"), book, { recursive: true });
    execFileSync(join(build, "linklist-host"), ["--publish", "--workspace", workspace, "--book", book],
        { env: { ...process.env, QT_QPA_PLATFORM: "offscreen", XDG_DATA_HOME: path }, stdio: "pipe", timeout: 60_000 });
    const files = join(book, "files/plugin");
    const script = unscramble(readFileSync(join(files, "bookPlugin.js"), "utf8"));
    return {
        book: pathToFileURL(join(book, "pages/links.html")).href,
        plain: plainPage("\uFEFF" + script.replace(/^var bookPlugin=/, "var config=")),
        files,
    };
}

// Opens the page, hands it over with its facts, and checks what holds for every page, however bad its configuration.
async function visit(url, use = () => {}, { size = desktop, isScriptBroken = false } = {}) {
    await tab.load(url, size);
    const facts = await tab.evaluate(pageFacts);
    assert.equal(facts.isScriptRun, false, "no text ran as a script");
    assert.deepEqual(facts.strangers, []);
    assert.deepEqual(tab.exceptions.filter((text) => !isScriptBroken || !/SyntaxError|boom/.test(text)), []);
    assert.equal(facts.noticeLines, facts.notice === "" ? 0 : 1, `${facts.notice} ${JSON.stringify(size)} ${url}`);
    assert.ok(facts.isBoxShown || facts.notice !== "", "the page is blank");
    await use(facts, tab);
    assert.deepEqual(tab.dialogs, []);
}

const onBoth = (name, use) => {
    for (const kind of kinds)
        test(`${kind}: ${name}`, (context) => use(kind, context));
};
const ordinary = () => publish({
    heading: "Links", headingSize: 20, headingColor: "0xFF0000", bodySize: 10, bodyColor: "0x0000FF",
    items: [{ link: "http://example.com/", title: "One" }, { link: "page2.html", title: "Two\nlines" },
        { link: "mailto:a@example.com", title: "Three \u{1F4D6} \u65e5\u672c" }],
}, [10, 20, 30, 40, 25, 1]);

onBoth("the box shows what was configured", (kind) => visit(ordinary()[kind], (facts) => {
    const { strangers, noticeLines, isScriptRun, ...seen } = facts;
    assert.deepEqual(seen, {
        notice: "", isBoxShown: true, left: 10, top: 20, width: 60, height: 40, opacity: 0.75, isAbove: true,
        heading: "Links", headingPoints: 20, headingColor: "rgb(255, 0, 0)", bodyPoints: 10,
        bodyColor: "rgb(0, 0, 255)",
        items: [{ text: "One", href: "http://example.com/", direction: "ltr" },
            { text: "Two\nlines", href: "page2.html", direction: "ltr" },
            { text: "Three \u{1F4D6} \u65e5\u672c", href: "mailto:a@example.com", direction: "ltr" }],
    });
}));

onBoth("the layer below lies below the print and lets its links be clicked", (kind) => {
    const below = publish({ items: [{ link: "#x", title: "Below" }] }, [5, 5, 5, 5, 0, 0]);
    return visit(below[kind], async (facts, page) => {
        assert.equal(facts.isAbove, false);
        assert.equal(await page.evaluate(`(() => {
            const { left, top, width, height } = document.querySelector("#links a").getBoundingClientRect();
            return document.elementFromPoint(left + width / 2, top + height / 2).nodeName;
        })()`), "A");
    });
});

// A heading of blocks paints the whole box, so that a picture tells its place.
const blocks = (place) =>
    publish({ heading: "\u2588".repeat(6000), headingColor: "0xFF0000", headingSize: 12 }, place);

function redArea({ width, height, at }, isRed) {
    const area = { left: width, top: height, right: 0, bottom: 0, count: 0 };
    for (let y = 0; y < height; ++y) {
        for (let x = 0; x < width; ++x) {
            if (!isRed(at(x, y)))
                continue;
            area.left = Math.min(area.left, x);
            area.top = Math.min(area.top, y);
            area.right = Math.max(area.right, x + 1);
            area.bottom = Math.max(area.bottom, y + 1);
            ++area.count;
        }
    }
    return area;
}

onBoth("the picture has the box at its place, with its transparency, above or below the print", async (kind) => {
    const counts = {};
    for (const [layer, transparency] of [[1, 0], [0, 0], [1, 60]]) {
        const pages = blocks([30, 20, 25, 45, transparency, layer]);
        await visit(pages[kind], async (facts, page) => {
            // Red over the sheet's near white: the other channels show what shines through.
            const paper = 252 * transparency / 100;
            const area = redArea(picture(await page.screenshot()), ([r, g, b]) =>
                r > 240 && Math.abs(g - paper) < 6 && Math.abs(b - paper) < 8);
            counts[`${layer} ${transparency}`] = area.count;
            const box = await page.evaluate(`(({ left, top, right, bottom }) =>
                ({ left, top, right, bottom }))(document.getElementById("page").getBoundingClientRect())`);
            const [width, height] = [box.right - box.left, box.bottom - box.top];
            const expected = { left: box.left + 0.3 * width, top: box.top + 0.2 * height,
                right: box.left + 0.75 * width, bottom: box.top + 0.55 * height };
            for (const side of ["left", "top", "right", "bottom"]) {
                // Blocks begin after border and padding, and end before the scroll bar.
                const inside = (expected[side] - area[side]) * (["left", "top"].includes(side) ? -1 : 1);
                assert.ok(inside >= 0 && inside < 36, `${side}: ${area[side]} beside ${expected[side]}`);
            }
            assert.ok(area.count > 0.5 * (expected.right - expected.left) * (expected.bottom - expected.top));
        }, { size: { width: 640, height: 560 } });
    }
    // Print covers some of a box below it.
    assert.ok(counts["0 0"] < 0.99 * counts["1 0"], JSON.stringify(counts));
});

onBoth("a box without room says so", async (kind) => {
    for (const place of [[60, 20, 60, 20, 0, 1], [10, 70, 10, 30, 0, 1], [150, 20, -80, 20, 0, 1],
        [10, -90, 10, 110, 0, 1]]) {
        await visit(publish({}, place)[kind], (facts) => {
            assert.equal(facts.notice, words.noRoom, place.join());
            assert.equal(facts.isBoxShown, false);
        });
    }
});

const attacks = () => JSON.parse(readFileSync(source("tests/data/player/attacks.json"), "utf8")
    .replaceAll("PORT", String(port)));
// A document carries no control characters but tabs, and its line breaks arrive as <br/>.
const attacksInDocuments = () =>
    attacks().filter(({ title, link }) => !/[\u0000-\u0008\u000a-\u001f]/.test(title + link));
const hostile = () => publish({
    heading: "</script><script>window.pwned=1</script>", items: attacksInDocuments(),
});

function assertHarmless(facts, expected) {
    assert.equal(facts.notice, "");
    const shown = expected.filter(({ title, link }) => title + link.trim() !== "");
    assert.deepEqual(facts.items.map(({ text, href }) => [text, href]),
        shown.map(({ title, shown: text = title, href }) => [text, href]));
}

// Everything that a page asked for before is heard before this.
async function controlIsHeard() {
    const path = join(makeFolder(), "control.html");
    writeFileSync(path, `<img src="http://127.0.0.1:${port}/control">`);
    const page = await browser.open(pathToFileURL(path).href);
    await page.close();
}

onBoth("hostile titles and addresses stay text, and nothing is asked of the network", async (kind) => {
    heard.length = 0;
    await visit(hostile()[kind], async (facts, page) => {
        assert.equal(facts.heading, "</script><script>window.pwned=1</script>");
        assertHarmless(facts, attacksInDocuments());
        await page.evaluate(`for (const line of document.querySelectorAll("#links li, #links a, #links span"))
            for (const type of ["mouseover", "focus", "load", "error"])
                line.dispatchEvent(new Event(type, { bubbles: true }))`);
        await page.painted();
        assert.equal(await page.evaluate("'pwned' in window"), false);
        assert.deepEqual(page.refusals, [], "nothing even tried");
        await controlIsHeard();
    });
    assert.deepEqual(heard, ["GET /control HTTP/1.1"]);
});

test("plain: hostile texts with control characters stay text", async () => {
    const config = { opacity: 1, layout: 1, properties: { basic: { left: "5%", top: "5%", width: "90%", height: "90%" },
        extended: { title: { content: "All" }, body: { content: attacks() } } } };
    heard.length = 0;
    await visit(plainPage(`var config=${JSON.stringify(config)};`), async (facts) => {
        assertHarmless(facts, attacks());
        await controlIsHeard();
    });
    assert.deepEqual(heard, ["GET /control HTTP/1.1"]);
});

onBoth("the content policy forbids what a script would try", async (kind) => {
    heard.length = 0;
    await visit(ordinary()[kind], async (_, page) => {
        const tried = await page.evaluate(`(async () => {
            const base = "http://127.0.0.1:${port}/";
            const add = (name, attributes, text = "") => {
                const element = Object.assign(document.createElement(name), attributes);
                element.append(text);
                document.body.append(element);
            };
            add("script", {}, "window.pwned = 1");
            add("script", { src: "data:text/javascript,window.pwned=1" });
            add("script", { src: base + "script.js" });
            add("style", {}, "#box { display: none }");
            add("link", { rel: "stylesheet", href: base + "style.css" });
            add("link", { rel: "prefetch", href: base + "prefetch" });
            add("img", { src: base + "image.png" });
            add("iframe", { src: base + "frame.html" });
            add("object", { data: base + "object" });
            add("video", { src: base + "video" });
            add("base", { href: base });
            document.getElementById("box").setAttribute("style", "display: none");
            navigator.sendBeacon?.(base + "beacon");
            const form = Object.assign(document.createElement("form"), { action: base + "form" });
            document.body.append(form);
            form.submit();
            const answers = [];
            for (const url of [base + "fetch", "config.js", "file:///etc/passwd"])
                answers.push(await fetch(url).then(() => "read " + url, () => "refused"));
            try { answers.push(eval("1 + 1")); } catch { answers.push("refused"); }
            await new Promise((done) => setTimeout(done));
            return [...answers, document.baseURI.startsWith("file:"), getComputedStyle(box).display, "pwned" in window];
        })()`);
        assert.deepEqual(tried, ["refused", "refused", "refused", "refused", true, "block", false]);
        await controlIsHeard();
    });
    // Chromium opens a connection for a frame and a form before it looks at the policy, and sends nothing on it.
    assert.deepEqual(heard.filter((line) => line !== "a connection"), ["GET /control HTTP/1.1"]);
});

onBoth("a backslash-u without four digits is shown as it was typed", (kind) => {
    const heading = "C:\\users\\Ulla \\\\u12 ${Unicode} \\u{1F600} \\u";
    return visit(publish({ heading, items: [{ link: "#1", title: heading }] })[kind], (facts) => {
        assert.equal(facts.heading, heading);
        assert.equal(facts.items[0].text, heading);
    });
});

onBoth("an escape with four digits is its character, and a tab a blank", (kind) =>
    visit(publish({ heading: "\\u00e9\\U0041 a\tb" })[kind], (facts) =>
        assert.match(facts.heading, /^\u00e9A a\sb$/)));

onBoth("right-to-left titles read and align from the right, their neighbours do not", async (kind) => {
    const pages = publish({ heading: "\u05e2\u05d1\u05e8\u05d9\u05ea", items: [
        { link: "#1", title: "\u202eturned round" }, { link: "#2", title: "plain 123" },
        { link: "#3", title: "\u05e9\u05dc\u05d5\u05dd world" }, { link: "#4", title: "last 456" }] });
    await visit(pages[kind], async (facts, page) => {
        assert.deepEqual(facts.items.map((item) => item.direction), ["ltr", "ltr", "rtl", "ltr"]);
        // For each title where its first and its last character stand, and the room on both sides.
        const places = await page.evaluate(`[...document.querySelectorAll("#links li, #heading")].map((line) => {
            const node = document.createTreeWalker(line, NodeFilter.SHOW_TEXT).nextNode();
            const at = (from, to) => {
                const range = document.createRange();
                range.setStart(node, from);
                range.setEnd(node, to);
                return range.getBoundingClientRect();
            };
            const all = at(0, node.data.length);
            const outer = line.getBoundingClientRect();
            return { isForward: at(node.data.length - 1, node.data.length).left > at(1, 2).left,
                before: all.left - outer.left, after: outer.right - all.right };
        })`);
        const [heading, turned, neighbour, rtl, last] = places;
        assert.equal(turned.isForward, false);
        assert.ok(neighbour.isForward && last.isForward, "an override ends with its title");
        for (const { before, after } of [neighbour, last])
            assert.ok(before < 2 && after > 10);
        for (const { before, after } of [heading, rtl])
            assert.ok(after < 2 && before > 10);
    });
});

onBoth("texts of 100 KiB wrap and scroll inside the box", async (kind) => {
    const long = publish({ heading: "W".repeat(102_400), items: [{ link: "#", title: "\n".repeat(20_000) + "end" },
        { link: `http://example.com/${"x".repeat(102_400)}`, title: "x ".repeat(51_200) }] });
    await visit(long[kind], async (facts, page) => {
        assert.equal(facts.heading.length, 102_400);
        assert.equal(facts.items.length, 2);
        assert.equal(facts.width, 30);
        assert.deepEqual(await page.evaluate("[box.scrollWidth <= box.clientWidth, box.scrollHeight > 10000]"),
            [true, true]);
    });
});

onBoth("10,000 links are all there", async (kind, context) => {
    const many = publish({ items: Array.from({ length: 10_000 }, (_, index) =>
        ({ link: `http://example.com/${index}`, title: `Link number ${index}` })) });
    await visit(many[kind], async (facts, page) => {
        assert.equal(facts.items.length, 10_000);
        assert.equal(facts.items[9_999].text, "Link number 9999");
        await page.painted();
        const time = await page.evaluate(`performance.now()`);
        const loaded = await page.evaluate("performance.getEntriesByType('navigation')[0].loadEventEnd");
        context.diagnostic(`loaded after ${Math.round(loaded)} ms, painted and asked after ${Math.round(time)} ms`);
        assert.ok(loaded < 10_000);
    });
});

onBoth("the box can be scrolled and its links reached with the keyboard, and the focus is seen", async (kind) => {
    const items = Array.from({ length: 60 }, (_, index) => ({ link: `#${index}`, title: `Link ${index}` }));
    await visit(publish({ items })[kind], async (_, page) => {
        const focused = () => page.evaluate(`(({ id, nodeName, textContent }) => id || nodeName + " " + textContent)(
            document.activeElement)`);
        const outline = () => page.evaluate(`(({ outlineStyle, outlineWidth }) => outlineStyle + " " + outlineWidth)(
            getComputedStyle(document.activeElement))`);
        const tab = () => page.press("Tab", { keyCode: 9 });
        const calm = await page.screenshot();
        await tab();
        assert.equal(await focused(), "box");
        assert.equal(await outline(), "solid 2px");
        assert.notDeepEqual(await page.screenshot(), calm);
        await page.press("PageDown", { keyCode: 34 });
        await page.evaluate(`new Promise((done) => box.scrollTop > 0 ? done() : box.onscroll = done)`);
        await tab();
        assert.equal(await focused(), "A Link 0");
        assert.equal(await outline(), "solid 2px");
        for (let index = 1; index < 60; ++index)
            await tab();
        assert.equal(await focused(), "A Link 59");
        const [link, box] = await page.evaluate(`[document.activeElement, box].map((element) =>
            (({ top, bottom }) => ({ top, bottom }))(element.getBoundingClientRect()))`);
        assert.ok(link.top >= box.top && link.bottom <= box.bottom, "the focused link is in sight");
        await page.press("Enter", { keyCode: 13, text: "\r" });
        assert.equal(await page.evaluate("location.hash"), "#59");
    });
});

onBoth("a box that need not scroll is no stop of the Tab key", (kind) =>
    visit(ordinary()[kind], async (_, page) => {
        await page.press("Tab", { keyCode: 9 });
        assert.equal(await page.evaluate("document.activeElement.textContent"), "One");
    }));

onBoth("a screen reader is told headings, a named region, a list and links", (kind) =>
    visit(ordinary()[kind], async (_, page) => {
        const nodes = await page.accessibility();
        const ofRole = (role) => nodes.filter((node) => node.role === role);
        assert.deepEqual(ofRole("heading").map(({ name, level }) => [name, level]),
            [[kind === "book" ? "Winter" : "Link List", 1], ["Links", 2]]);
        assert.deepEqual(ofRole("region").map(({ name }) => name), ["Links"]);
        assert.equal(ofRole("main").length, 1);
        assert.deepEqual(ofRole("link").map(({ name }) => name).sort(), ["One", "Two lines",
            "Three \u{1F4D6} \u65e5\u672c", ...(kind === "book" ? ["Autumn", "Cover"] : [])].sort());
        assert.equal(ofRole("listitem").length, 3);
        assert.deepEqual(await page.evaluate(`[document.documentElement.lang, document.title !== "",
            new Set([...document.querySelectorAll("[id]")].map(({ id }) => id)).size
                === document.querySelectorAll("[id]").length,
            document.querySelectorAll("[tabindex]:not([tabindex='0'])").length]`), ["en", true, true, 0]);
    }));

onBoth("a heading without text is no heading, and the region keeps a name", (kind) =>
    visit(publish({ heading: " ", items: [{ link: "#", title: "One" }] })[kind], async (facts, page) => {
        assert.equal(facts.heading, null);
        const nodes = await page.accessibility();
        assert.equal(nodes.filter(({ role }) => role === "heading").length, 1);
        assert.deepEqual(nodes.filter(({ role }) => role === "region").map(({ name }) => name), ["Links"]);
    }));

test("text that the page writes itself has a contrast of 4.5 or more", async () => {
    const damaged = plainPage("var config=5;");
    const book = pathToFileURL(source("host/sample-book/pages/links.html")).href;
    const luminance = (color) => color.match(/\d+/g).slice(0, 3).map((value) => value / 255)
        .map((value) => value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4)
        .reduce((sum, value, index) => sum + value * [0.2126, 0.7152, 0.0722][index], 0);
    const paper = luminance("rgb(255, 254, 250)");
    const desk = luminance("rgb(207, 201, 190)");
    for (const [url, selector, ground] of [[damaged, "#notice", paper], [book, "#notice", paper],
        [book, ".running", paper], [book, "h1", paper], [book, ".number", paper], [book, "nav a", desk]]) {
        await tab.load(url, desktop);
        const ink = luminance(await tab.evaluate(`getComputedStyle(document.querySelector("${selector}")).color`));
        assert.ok((ground + 0.05) / (ink + 0.05) >= 4.5, selector);
    }
});

test("what a page says has one line on a telephone and in a small preview", async () => {
    const { book, files } = publishAfresh({}, [10, 26, 60, 26, 0, 1]);
    const inBook = (content) => () => {
        writeFileSync(join(files, "bookPlugin.text.js"), content);
        return book;
    };
    for (const [make, notice] of [
        [inBook(""), words.unpublished], [inBook("var bookPluginText=5;"), words.damaged],
        [() => publish({}, [60, 20, 60, 20, 0, 1]).book, words.noRoom],
        [() => plainPage(""), words.unconfigured], [() => plainPage("var config=5;"), words.damaged],
        [() => plainPage("var config={properties:{extended:{}}};"), words.incomplete],
        [() => publish({}, [60, 20, 60, 20, 0, 1]).plain, words.noRoom],
    ]) {
        const url = make();
        for (const size of [{ width: 320, height: 568, mobile: true }, { width: 400, height: 300 }])
            await visit(url, (facts) => assert.equal(facts.notice, notice), { size });
    }
});

test("both pages fit a telephone and a desk", async () => {
    for (const kind of kinds) {
        for (const size of [{ width: 390, height: 844, mobile: true }, { width: 320, height: 568, mobile: true },
            { width: 1280, height: 960 }, { width: 400, height: 300 }]) {
            await visit(ordinary()[kind], async (facts, page) => {
                assert.deepEqual([facts.left, facts.width], [10, 60]);
                assert.ok(await page.evaluate("document.documentElement.scrollWidth <= innerWidth"),
                    `${kind} at ${size.width}`);
                assert.ok(await page.evaluate("parseFloat(getComputedStyle(box).fontSize) >= 11"), "letters to read");
            }, { size });
        }
    }
});

const whole = { opacity: 1, layout: 1, properties: {
    basic: { left: "10.0%", top: "26.0%", width: "30.0%", height: "48.0%" },
    extended: { title: { content: "Heading", fontSize: 16, color: "#7A2E1F" },
        body: { fontSize: 12, color: "#1F4E79", content: [{ link: "#", title: "One" }] } } } };
// The whole configuration with another value at that path.
const changed = (path, script) => {
    const copy = structuredClone(whole);
    const names = path.split(".");
    const last = names.pop();
    names.reduce((value, name) => value[name], copy)[last] = "@";
    return `var config=${JSON.stringify(copy).replace('"@"', script)};`;
};

for (const [script, notice] of Object.entries({
    "": words.unconfigured,
    "var other={};": words.unconfigured,
    "var config;": words.unconfigured,
    "var config={\"opacity\":};": words.damaged,
    "<html>": words.damaged,
    "\0\0\0": words.damaged,
    "throw new Error('boom')": words.damaged,
    "var config=null;": words.damaged,
    "var config=5;": words.damaged,
    "var config=true;": words.damaged,
    "var config='text';": words.damaged,
    "var config=[];": words.damaged,
    "var config={};": words.damaged,
    "var config=function () {};": words.damaged,
    "var config=Symbol('s');": words.damaged,
    "var config={properties:null};": words.damaged,
    "var config={properties:[1]};": words.damaged,
    "var config={properties:{extended:'x'}};": words.damaged,
    "var config={};config.properties=config;": words.damaged,
    "var config=new Proxy({},{get(){throw new Error('trap')}});": words.damaged,
    "var config={properties:{get extended(){throw 1}}};": words.damaged,
    "var config=Object.create(null);": words.damaged,
    "var config={properties:{extended:{}}};": words.incomplete,
    "var config={};config.properties={basic:config,extended:config};config.title=config.body=config;": words.incomplete,
})) {
    test(`plain: says in one line what is wrong with ${JSON.stringify(script)}`, () =>
        visit(plainPage(script), (facts) => {
            assert.equal(facts.notice, notice);
            assert.equal(facts.isBoxShown, notice === words.incomplete);
        }, { isScriptBroken: true }));
}

test("plain: a missing file is no damage", () =>
    visit(plainPage(undefined), (facts) => assert.equal(facts.notice, words.unconfigured)));

test("plain: a file that was cut off anywhere leaves no blank page", async () => {
    const text = changed("layout", "1");
    for (let length = 0; length < text.length - 1; length += 17) {
        await visit(plainPage(text.slice(0, length)), (facts) => {
            // "var config" alone is a script that declares nothing yet.
            const isScript = ["", "var config"].includes(text.slice(0, length).trim());
            assert.equal(facts.notice, isScript ? words.unconfigured : words.damaged, String(length));
        }, { isScriptBroken: true });
    }
});

const strange = ["null", "-1", "'text'", "[[1]]", "{\"a\":{}}", "true", "NaN", "1e999", "1e308",
    "'; background: url(http://127.0.0.1/)'", "Symbol('s')", "config"];

for (const path of ["opacity", "layout", "properties.basic", "properties.basic.left", "properties.basic.width",
    "properties.extended.title", "properties.extended.title.content", "properties.extended.title.fontSize",
    "properties.extended.title.color", "properties.extended.body", "properties.extended.body.fontSize",
    "properties.extended.body.color", "properties.extended.body.content"]) {
    test(`plain: a strange ${path} costs no more than itself`, async () => {
        for (const value of strange) {
            await visit(plainPage(changed(path, value)), async (facts, page) => {
                assert.ok(facts.isBoxShown, value);
                assert.ok(["", words.incomplete].includes(facts.notice), value);
                assert.match(`${facts.headingColor} ${facts.bodyColor}`, /^rgb\([\d, ]+\) rgb\([\d, ]+\)$/);
                assert.ok(facts.headingPoints >= 1 && facts.headingPoints <= 200, value);
                assert.ok(facts.opacity >= 0 && facts.opacity <= 1, value);
                if (!path.endsWith("left") && !path.endsWith("basic"))
                    assert.equal(facts.left, 10, value);
                if (path !== "properties.extended.title" && path !== "properties.extended.title.content")
                    assert.equal(facts.heading, "Heading", value);
                assert.equal(await page.evaluate("getComputedStyle(box).backgroundImage"), "none");
            });
        }
    });
}

test("plain: what is said about values of every kind", async () => {
    for (const [path, value, notice, fact, expected] of [
        ["properties.extended.title.fontSize", "'18'", "", "headingPoints", 18],
        ["properties.extended.title.fontSize", "1e9", "", "headingPoints", 200],
        ["properties.extended.title.fontSize", "0", words.incomplete, "headingPoints", 16],
        ["properties.extended.title.fontSize", "undefined", "", "headingPoints", 16],
        ["properties.extended.title.color", "'#ff8000'", "", "headingColor", "rgb(255, 128, 0)"],
        ["properties.extended.title.color", "'red'", words.incomplete, "headingColor", "rgb(0, 0, 0)"],
        ["properties.extended.title.color", "'#fff'", words.incomplete, "headingColor", "rgb(0, 0, 0)"],
        ["properties.extended.title.content", "7", "", "heading", "7"],
        ["properties.extended.body.content", "{}", "", "items", []],
        ["properties.extended.body.content", "[5]", words.incomplete, "items", []],
        ["properties.basic.left", "'1e1%'", words.incomplete, "left", 10],
        ["properties.basic.left", "'20'", words.incomplete, "left", 10],
        ["properties.basic.left", "'20%;color:red'", words.incomplete, "left", 10],
        ["properties.basic.left", "'-5.5%'", "", "left", -5.5],
        ["opacity", "'0.5'", "", "opacity", 0.5],
        ["opacity", "1.5", "", "opacity", 1],
        ["opacity", "-3", "", "opacity", 0],
        ["layout", "0", "", "isAbove", false],
        ["layout", "9223372036854775807", "", "isAbove", true],
        ["layout", "-9223372036854775808", "", "isAbove", false],
    ]) {
        await visit(plainPage(changed(path, value)), (facts) => {
            assert.equal(facts.notice, notice, `${path} ${value}`);
            assert.deepEqual(facts[fact], expected, `${path} ${value}`);
        });
    }
});

test("book: without a session the page says that nothing was published", async () => {
    const url = pathToFileURL(source("host/sample-book/pages/links.html")).href;
    await visit(url, (facts) => {
        assert.equal(facts.notice, words.unpublished);
        assert.equal(facts.isBoxShown, false);
    });
});

test("book: says in one line what is wrong with its text", async () => {
    const { book, files } = publishAfresh({}, [10, 26, 60, 26, 0, 1]);
    const file = join(files, "bookPlugin.text.js");
    const text = readFileSync(file, "utf8");
    assert.match(text, /^var bookPluginText="[A-Za-v]+[0-9A-Fa-f]{8}_";$/);
    for (const [content, notice] of [
        [text, ""], ["", words.unpublished], [text.slice(0, text.length / 2), words.damaged],
        [text.replace("_\"", "\""), words.damaged], [text.replace("\"", "\"A"), words.damaged],
        ["var bookPluginText=null;", words.damaged], ["var bookPluginText=5;", words.damaged],
        ["var bookPluginText=\"\";", words.damaged], ["var bookPluginText=\"00000000_\";", words.damaged],
    ]) {
        writeFileSync(file, content);
        await visit(book, (facts) => assert.equal(facts.notice, notice, content.slice(0, 40)),
            { isScriptBroken: true });
    }
    rmSync(file);
    await visit(book, (facts) => assert.equal(facts.notice, words.unpublished));
});

// A foreign document may carry anything as a number, and a save keeps it. config.js is a script and runs it.
test("book: what is published is data and never run as a script", async () => {
    const pages = publish({ foreign: "<extra type=\"number\">window.pwned=1</extra>" });
    await visit(pages.book, (facts) => assert.equal(facts.notice, words.damaged));
    await tab.load(pages.plain);
    assert.equal(await tab.evaluate("window.pwned"), 1);
});

test("book: the page code is the bundle's", () => {
    for (const name of ["player.css", "player.js", "unscramble.js"])
        assert.deepEqual(readFileSync(join(ordinary().files, name)), readFileSync(source(`Resources/html/${name}`)));
    assert.equal(dirname(ordinary().files).endsWith("book/files"), true);
});
