// Reads a published configuration back for player.js. bookPlugin.text.js, loaded before, declares the scrambled text
// as `bookPluginText`; this script declares `bookPlugin`, which is null when the text cannot be read.
"use strict";

// The plain text; throws where the text has not exactly the scrambled form.
function unscramble(text) {
    const parts = /^([A-Za-v]*)([0-9A-Fa-f]{8})_$/.exec(text);
    if (!parts || parts[1].length % 2 > 0)
        throw new Error("not a scrambled text");
    const alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuv";
    const bytes = new Uint8Array(parts[1].length / 2);
    for (let p = 0; p < bytes.length; ++p) {
        const first = 16 * (p % 3);
        const high = alphabet.indexOf(parts[1][2 * p]) - first;
        const low = alphabet.indexOf(parts[1][2 * p + 1]) - first;
        if (high < 0 || high > 15 || low < 0 || low > 15)
            throw new Error("a character out of turn");
        bytes[p] = 16 * high + low;
    }

    // RC4, which takes its own work back.
    const state = Array.from({ length: 256 }, (_, index) => index);
    const swap = (a, b) => { [state[a], state[b]] = [state[b], state[a]]; };
    for (let i = 0, j = 0; i < 256; ++i) {
        j = (j + state[i] + parts[2].charCodeAt(i % 8)) % 256;
        swap(i, j);
    }
    for (let p = 0, i = 0, j = 0; p < bytes.length; ++p) {
        i = (i + 1) % 256;
        j = (j + state[i]) % 256;
        swap(i, j);
        bytes[p] ^= state[(state[i] + state[j]) % 256];
    }
    return new TextDecoder("utf-8", { fatal: true, ignoreBOM: true }).decode(bytes);
}

// The object of a plain text, read as data: nothing in it is run. A tab is the only control character that the
// generator leaves in a text.
function bookPluginFrom(plain) {
    const parts = /^var bookPlugin=([^]*);$/.exec(plain);
    return JSON.parse(parts[1].replaceAll("\t", " "));
}

var bookPlugin = (function () {
    if (typeof bookPluginText === "undefined")
        return undefined;
    try {
        return bookPluginFrom(unscramble(bookPluginText));
    } catch {
        return null;
    }
})();
