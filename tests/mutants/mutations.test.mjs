import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { test } from "node:test";
import { draws, mutated, mutations, tokenize } from "./mutations.mjs";

const sample = readFileSync(new URL("sample.cpp", import.meta.url), "utf8");
const said = ({ line, kind, before, after }) => `${line} ${kind}: ${before} -> ${after}`;
const first = (count, sources, seed) => {
    const all = [];
    for (const drawn of draws(sources, seed)) {
        if (all.push(drawn) === count)
            break;
    }
    return all;
};

test("comments and preprocessor lines are no tokens, and a string is one", () => {
    const texts = (source) => tokenize(source).map(({ text }) => text);
    assert.deepEqual(texts('a // b "\n/* c\n"d" */ e'), ["a", "e"]);
    assert.deepEqual(texts("#define A \\\n 1 + 2 // x\n  # include <b>\nc #d"), ["c", "#", "d"]);
    assert.deepEqual(texts("// goes on \\\n here\na"), ["a"]);
    assert.deepEqual(texts('R"(")(a" // b)" u8"//" \'"\' "\\"" c'), ['R"(")(a" // b)"', 'u8"//"', "'\"'", '"\\""', "c"]);
    assert.deepEqual(texts('R"x(a)" b)x"_s'), ['R"x(a)" b)x"_s']);
    assert.deepEqual(texts("1'000ull 0x1'Fd+2 1.5e-3f .5 1e+9 a.b1"),
        ["1'000ull", "0x1'Fd", "+", "2", "1.5e-3f", ".5", "1e+9", "a", ".", "b1"]);
    assert.deepEqual(texts("a<<=b->*c...d::e<=>f"), ["a", "<<=", "b", "->*", "c", "...", "d", "::", "e", "<=>", "f"]);
    assert.deepEqual(tokenize('a\n"b\\\nc" /*\n*/ R"(\n)"\nd').map(({ line }) => line), [1, 2, 4, 6]);
});

test("exactly these faults can be put into the sample", () => {
    assert.deepEqual(mutations(sample).map(said), [
        "9 constant: 1'000 -> 1001",
        "9 constant: 1'000 -> 999",
        "10 constant: R\"x(a \"quoted\" // line\n    if (b < c) of 2 lines)x\" -> R\"()\"",
        "10 constant: R\"x(a \"quoted\" // line\n    if (b < c) of 2 lines)x\" -> R\"(mutant)\"",
        "16 return: { -> { return {};",
        "20 constant: 0x0f -> 0x10",
        "20 constant: 0x0f -> 0x0e",
        "21 constant: .5 -> 1.5",
        "21 constant: .5 -> (-0.5)",
        "27 arithmetic: - -> ",
        "27 constant: 1.0f -> 2.0f",
        "27 constant: 1.0f -> 0.0f",
        "28 return: { -> { return;",
        "29 constant: u\"a\\\"b\"_s -> u\"\"_s",
        "29 constant: u\"a\\\"b\"_s -> u\"mutant\"_s",
        "31 branches: width >= 0 && !text.isEmpty() -> !(width >= 0 && !text.isEmpty())",
        "31 comparison: >= -> >",
        "31 comparison: >= -> <",
        "31 constant: 0 -> 1",
        "31 constant: 0 -> (-1)",
        "31 comparison: && -> ||",
        "31 comparison: ! -> ",
        "32 removed: text = QString(), m_lists.clear() -> ",
        "34 removed: QObject::disconnect(parent) -> ",
        "38 return: { -> { return {};",
        "39 arithmetic: - -> +",
        "39 constant: 1 -> 2",
        "39 constant: 1 -> 0",
        "40 constant: 2 -> 3",
        "40 constant: 2 -> 1",
        "41 removed: Q_EMIT changed(index) -> ",
        "44 removed: m_counts[index] += index * 2 -> ",
        "44 arithmetic: += -> -=",
        "44 arithmetic: * -> /",
        "44 constant: 2 -> 3",
        "44 constant: 2 -> 1",
        "46 branches: found != m_lists.end() -> !(found != m_lists.end())",
        "46 comparison: != -> ==",
        "47 comparison: == -> !=",
        "47 constant: '+' -> 'x'",
        "47 branches: found->name : QString() -> QString() : found->name",
        "49 arithmetic: ++ -> --",
        "49 removed: ++list -> ",
        "50 removed: connect(this, &Pair::changed, [this] { update(); }) -> ",
        "50 return: { -> { return;",
        "50 removed: update() -> ",
        "51 comparison: < -> <=",
        "51 comparison: < -> >=",
        "51 constant: 3 -> 4",
        "51 constant: 3 -> 2",
        "56 return: { -> { return {};",
        "56 return: { -> { return true;",
        "57 constant: true -> false",
    ]);
});

test("a fault changes its own place and nothing else", () => {
    for (const mutation of mutations(sample)) {
        const { start, end, before, after } = mutation;
        const result = mutated(sample, mutation);
        assert.equal(sample.slice(start, end), before);
        assert.equal(result.slice(0, start), sample.slice(0, start));
        assert.equal(result.slice(start), after + sample.slice(end));
        assert.notEqual(result, sample);
        assert.equal(sample.slice(0, start).split("\n").length, mutation.line);
    }
});

test("the same seed and sources give the same draws, each fault once", () => {
    const sources = new Map([["b.cpp", sample], ["a.cpp", "int f()\n{\n    return 1 + 2;\n}\n"]]);
    const all = [...draws(sources, 7)];
    assert.equal(all.length, mutations(sample).length + 6);
    assert.equal(new Set(all.map((drawn) => `${drawn.file} ${drawn.start} ${said(drawn)}`)).size, all.length);
    assert.deepEqual([...draws(new Map([...sources].reverse()), 7)], all);
    assert.notDeepEqual(first(10, sources, 8), all.slice(0, 10));
});

test("every line has the same chance, and so has every fault of a line", () => {
    // One line with one fault, one with many, one in another file.
    const sources = new Map([
        ["a.cpp", "bool one = true;\nint many[] = {1, 2, 3, 4, 5, 6, 7, 8};\n"],
        ["b.cpp", "int two = 2;\n"],
    ]);
    const times = new Map();
    const count = (key) => times.set(key, (times.get(key) ?? 0) + 1);
    const tries = 6000;
    for (let seed = 0; seed < tries; seed++) {
        const [{ file, line, start, after }] = first(1, sources, seed);
        count(`${file}:${line}`);
        if (line === 2)
            count(`${start} ${after}`);
    }
    const isFair = (n, share) => Math.abs(n - tries * share) < 4 * Math.sqrt(tries * share * (1 - share));
    for (const line of ["a.cpp:1", "a.cpp:2", "b.cpp:1"])
        assert.ok(isFair(times.get(line), 1 / 3), `${line}: ${times.get(line)}`);
    const faults = [...times].filter(([key]) => !key.includes(":"));
    assert.equal(faults.length, 16);
    for (const [key, n] of faults)
        assert.ok(isFair(n, 1 / 48), `${key}: ${n}`);
});
