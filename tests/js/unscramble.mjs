// Reads scrambled player configurations back, as a book's player does.
//   node tests/js/unscramble.mjs FILE      prints the plain script text
import { readFileSync } from "node:fs";
import { pathToFileURL } from "node:url";

const alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

function rc4(key, data) {
    const state = Uint8Array.from({ length: 256 }, (_, index) => index);
    for (let i = 0, j = 0; i < 256; ++i) {
        j = (j + state[i] + key[i % key.length]) & 255;
        [state[i], state[j]] = [state[j], state[i]];
    }
    let i = 0;
    let j = 0;
    return data.map((byte) => {
        i = (i + 1) & 255;
        j = (j + state[i]) & 255;
        [state[i], state[j]] = [state[j], state[i]];
        return byte ^ state[(state[i] + state[j]) & 255];
    });
}

// One half of a byte: each of three turns has sixteen characters of the alphabet for its own.
function nibble(character, turn) {
    const value = alphabet.indexOf(character) - 16 * turn;
    if (value < 0 || value > 15)
        throw new Error(`"${character}" does not belong to turn ${turn}`);
    return value;
}

// The plain text; throws where the text has not exactly the scrambled form or is not UTF-8 inside.
export function unscramble(text) {
    const parts = /^([A-Za-v]*)([0-9A-Fa-f]{8})_$/.exec(text);
    if (!parts || parts[1].length % 2 !== 0 || text.endsWith("\n"))
        throw new Error("not a scrambled text");
    const [, pairs, key] = parts;
    const bytes = Uint8Array.from({ length: pairs.length / 2 }, (_, p) =>
        16 * nibble(pairs[2 * p], p % 3) + nibble(pairs[2 * p + 1], p % 3));
    const plain = rc4(new TextEncoder().encode(key), bytes);
    return new TextDecoder("utf-8", { fatal: true, ignoreBOM: true }).decode(plain);
}

if (process.argv[1] && import.meta.url === pathToFileURL(process.argv[1]).href) {
    if (process.argv.length !== 3) {
        console.error("usage: node unscramble.mjs FILE");
        process.exit(2);
    }
    process.stdout.write(unscramble(readFileSync(process.argv[2], "utf8")));
}
