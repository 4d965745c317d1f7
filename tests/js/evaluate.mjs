// Runs a player configuration, plain or scrambled, as a browser would, and prints the object it declares.
//   node tests/js/evaluate.mjs FILE      prints JSON.stringify of bookPlugin or config
import { readFileSync } from "node:fs";
import { pathToFileURL } from "node:url";
import vm from "node:vm";
import { unscramble } from "./unscramble.mjs";

export function evaluate(content) {
    const text = content.replace(/^\uFEFF/, "");
    const context = vm.createContext({});
    vm.runInContext(text.endsWith("_") ? unscramble(text) : text, context, { timeout: 5000 });
    const value = context.bookPlugin ?? context.config;
    if (typeof value !== "object" || value === null)
        throw new Error("the script declares neither bookPlugin nor config");
    return JSON.stringify(value);
}

if (process.argv[1] && import.meta.url === pathToFileURL(process.argv[1]).href) {
    if (process.argv.length !== 3) {
        console.error("usage: node evaluate.mjs FILE");
        process.exit(2);
    }
    console.log(evaluate(readFileSync(process.argv[2], "utf8")));
}
