import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { randomBytes, randomInt } from "node:crypto";
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { test } from "node:test";
import { fileURLToPath } from "node:url";
import vm from "node:vm";
import { evaluate } from "./evaluate.mjs";
import { unscramble } from "./unscramble.mjs";

const here = (path) => fileURLToPath(new URL(path, import.meta.url));

// The writing side once more, from the description of the format alone and sharing nothing with the reader.
function keyStream(key, length) {
    const s = [];
    for (let i = 0; i < 256; i++)
        s.push(i);
    let j = 0;
    for (let i = 0; i < 256; i++) {
        j = (j + s[i] + key.charCodeAt(i % key.length)) % 256;
        const kept = s[i];
        s[i] = s[j];
        s[j] = kept;
    }
    const stream = [];
    let x = 0;
    let y = 0;
    while (stream.length < length) {
        x = (x + 1) % 256;
        const t = s[x];
        y = (y + t) % 256;
        s[x] = s[y];
        s[y] = t;
        stream.push(s[(s[x] + t) % 256]);
    }
    return stream;
}

function scramble(text, key) {
    const turns = ["ABCDEFGHIJKLMNOP", "QRSTUVWXYZabcdef", "ghijklmnopqrstuv"];
    const bytes = Buffer.from(text, "utf8");
    const stream = keyStream(key, bytes.length);
    let out = "";
    bytes.forEach((byte, index) => {
        const hex = (byte ^ stream[index]).toString(16).padStart(2, "0");
        for (const digit of hex)
            out += turns[index % 3][parseInt(digit, 16)];
    });
    return out + key + "_";
}

// The script that a book's page reads the published text with; answers what it declares.
function bookPage(bookPluginText) {
    const context = vm.createContext({ TextDecoder, ...bookPluginText === undefined ? {} : { bookPluginText } });
    vm.runInContext(readFileSync(here("../../Resources/html/unscramble.js"), "utf8"), context);
    return context;
}

// A text of any characters, those of four bytes in UTF-8 included; halves of pairs have no UTF-8.
function randomText() {
    return String.fromCodePoint(...Array.from({ length: randomInt(400) }, () => {
        const point = randomInt(2 ** randomInt(7, 21)) + (randomInt(8) === 0 ? 0x10000 : 0);
        return point >= 0xd800 && point < 0xe000 ? 0x1f4d6 : point;
    }));
}

function inFile(content, use) {
    const folder = mkdtempSync(join(tmpdir(), "linklist-js-"));
    try {
        const file = join(folder, "file.js");
        writeFileSync(file, content);
        return use(file);
    } finally {
        rmSync(folder, { recursive: true });
    }
}

test("the model's cipher is the published one", () => {
    // The well-known vector: key "Key", text "Plaintext".
    const stream = keyStream("Key", 9);
    const bytes = [...Buffer.from("Plaintext")].map((byte, index) => byte ^ stream[index]);
    assert.equal(Buffer.from(bytes).toString("hex"), "bbf316e8d940af0ad3");
});

test("reads a text whose characters were worked out by hand", () => {
    // Key "Key" has the wrong form for a file, so the vector is the empty text and one byte under a real key.
    assert.equal(unscramble("0a1B2c3D_"), "");
    const byte = 0x41 ^ keyStream("00000000", 1)[0];
    assert.equal(unscramble("ABCDEFGHIJKLMNOP"[byte >> 4] + "ABCDEFGHIJKLMNOP"[byte & 15] + "00000000_"), "A");
});

for (const [name, text] of Object.entries({
    "one byte": "x",
    "three bytes, one of each turn": "abc",
    "a configuration": "var bookPlugin={\"opacity\":1.000000,\"layout\":1};",
    "text beyond ASCII": "caf\u00e9 \u65e5\u672c\u8a9e \u{1F4D6}",
    "a mark and line feeds": "\uFEFFa\nb\r\n\0c",
    "more than one round of the state": "0123456789".repeat(1000),
})) {
    test(`reads back ${name}`, () => {
        for (const key of ["00000000", "89abcdef", "89ABCDEF", "fFaA0123"]) {
            const scrambled = scramble(text, key);
            assert.equal(scrambled.length, 2 * Buffer.byteLength(text) + 9);
            assert.equal(unscramble(scrambled), text);
        }
    });
}

test("the page's reader and this one read the same from 2,000 random texts", () => {
    const page = bookPage();
    for (let round = 0; round < 2000; ++round) {
        const text = randomText();
        const key = randomBytes(4).toString("hex").replace(/[a-f]/g, (letter) =>
            randomInt(2) === 0 ? letter : letter.toUpperCase());
        const scrambled = scramble(text, key);
        assert.equal(page.unscramble(scrambled), text, scrambled);
        assert.equal(unscramble(scrambled), text, scrambled);
    }
});

test("the page's reader declares what was published, read as data", () => {
    const scrambled = (script) => scramble(script, "0a1B2c3D");
    const read = (script) => JSON.stringify(bookPage(scrambled(script)).bookPlugin);
    assert.equal(bookPage().bookPlugin, undefined);
    assert.equal(read("var bookPlugin={\"title\":\"\u{1F4D6} \u2028 \\u00e9\"};"),
        "{\"title\":\"\u{1F4D6} \u2028 \u00e9\"}");
    assert.equal(read("var bookPlugin={\"title\":\"a\tb\"};"), "{\"title\":\"a b\"}");
    for (const script of ["", "var bookPlugin=", "var bookPlugin={\"a\":1}", "var config={};", "var bookPlugin=run();",
        "var bookPlugin={\"a\":\"\\users\"};", "var bookPlugin={\"fontSize\":};", "\uFEFFvar bookPlugin={};"])
        assert.equal(read(script), "null", script);
});

test("letter case makes different keys", () => {
    assert.notEqual(scramble("same", "0000000a").slice(0, 8), scramble("same", "0000000A").slice(0, 8));
});

for (const [name, text] of Object.entries({
    "nothing": "",
    "no final underscore": "AQ00000000",
    "a short key": "0000000_",
    "a key that is no hexadecimal number": "ABg0000000_",
    "half a pair": "A00000000_",
    "a pair of the wrong turn": "QQ00000000_",
    "a character outside the alphabet": "A+00000000_",
    "a final line feed": "00000000_\n",
})) {
    test(`refuses ${name}`, () => {
        assert.throws(() => unscramble(text));
        assert.throws(() => bookPage().unscramble(text));
        assert.equal(bookPage(text).bookPlugin, null);
    });
}

test("refuses bytes that are not UTF-8", () => {
    const byte = 0xff ^ keyStream("00000000", 1)[0];
    const pair = "ABCDEFGHIJKLMNOP"[byte >> 4] + "ABCDEFGHIJKLMNOP"[byte & 15];
    assert.throws(() => unscramble(pair + "00000000_"), TypeError);
    assert.equal(bookPage(pair + "00000000_").bookPlugin, null);
});

test("evaluates plain and scrambled scripts, with and without a mark", () => {
    const expected = "{\"layout\":2,\"title\":\"\u65e5\"}";
    assert.equal(evaluate(`\uFEFFvar config=${expected};`), expected);
    assert.equal(evaluate(`var bookPlugin=${expected};`), expected);
    assert.equal(evaluate(scramble(`var bookPlugin=${expected};`, "12345678")), expected);
});

test("a script that is broken or declares something else is an error", () => {
    assert.throws(() => evaluate("var config={\"fontSize\":};"));
    assert.throws(() => evaluate("var other={};"));
});

test("both commands print what they read", () => {
    const script = "var bookPlugin={\"layout\":1};";
    inFile(scramble(script, "aBcDeF01"), (file) => {
        assert.equal(execFileSync(process.execPath, [here("unscramble.mjs"), file], { encoding: "utf8" }), script);
        assert.equal(execFileSync(process.execPath, [here("evaluate.mjs"), file], { encoding: "utf8" }),
            "{\"layout\":1}\n");
    });
});

test("the shipped configuration says what the shipped document and place say", () => {
    const resources = (path) => readFileSync(here(`../../Resources/${path}`), "utf8");
    const config = JSON.parse(evaluate(resources("html/config.js")));
    const xml = resources("data/linklist.xml");
    const [left, top, right, bottom, transparency, layer] = resources("data/defaultsettings.dat").split("\n").map(Number);
    const percent = (value) => `${value.toFixed(1)}%`;
    assert.deepEqual(config.properties.basic, {
        left: percent(left), top: percent(top),
        width: percent(100 - right - left), height: percent(100 - top - bottom),
    });
    assert.equal(config.opacity, 1 - transparency / 100);
    assert.equal(config.layout, layer);
    const texts = (name) => [...xml.matchAll(new RegExp(`<${name} type="\\w+">([^<]*)<`, "g"))].map((hit) => hit[1]);
    const { title, body } = config.properties.extended;
    assert.deepEqual(texts("content"), [title.content]);
    assert.deepEqual(texts("fontSize").map(Number), [title.fontSize, body.fontSize]);
    assert.deepEqual(texts("color").map((color) => color.replace("0x", "#")), [title.color, body.color]);
    assert.deepEqual(texts("link"), body.content.map((item) => item.link));
    assert.deepEqual(texts("title"), body.content.map((item) => item.title));
    assert.equal(body.content.length, 3);
});
