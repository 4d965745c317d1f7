// Would the tests notice a broken program? Puts small faults into private copies of the sources, one at a time, and
// runs the tests against each. docs/testing.md says how to read the result. Started by ./test --mutants N [SEED].
import { spawn, execFileSync } from "node:child_process";
import { createHash, randomInt } from "node:crypto";
import * as fs from "node:fs";
import { cpus } from "node:os";
import { basename, dirname, join, relative, resolve } from "node:path";
import { createInterface } from "node:readline";
import { fileURLToPath } from "node:url";
import { draws, mutated } from "./mutations.mjs";

const root = resolve(dirname(fileURLToPath(import.meta.url)), "../..");
const [wanted, seedGiven] = process.argv.slice(2).map((text) => (/^\d{1,9}$/.test(text) ? Number(text) : NaN));
if (!(wanted > 0) || Number.isNaN(seedGiven) || process.argv.length > 4) {
    console.error("usage: ./test --mutants N [SEED]");
    process.exit(2);
}
const seed = seedGiven ?? randomInt(1_000_000_000);
fs.mkdirSync(join(root, "build/mutants"), { recursive: true });
const folder = fs.realpathSync(join(root, "build/mutants"));
const jobs = cpus().length;

const fail = (message) => {
    console.error(`mutants: ${message}`);
    process.exit(1);
};
const digest = (parts) => {
    const hash = createHash("sha1");
    for (const part of parts)
        hash.update(part).update("\0");
    return hash.digest("hex");
};
const read = (path) => fs.readFileSync(path, "utf8");

// Runs a command to its end. Each line that it says is shown to `hear`, which stops it by answering true. Who says
// nothing for `limit` seconds is stopped, too. The answer's `silence` is the longest time without a line.
const running = new Set();
function run(command, args, { env, limit, hear } = {}) {
    return new Promise((done) => {
        const child = spawn(command, args, { env: { ...process.env, ...env }, stdio: ["ignore", "pipe", "pipe"] });
        const result = { status: null, lines: [], silence: 0, isTimeOut: false, isStopped: false };
        const stop = (reason) => {
            result[reason] = true;
            child.kill("SIGKILL");
        };
        let timer;
        let heardAt = Date.now();
        const listen = () => {
            result.silence = Math.max(result.silence, (Date.now() - heardAt) / 1000);
            heardAt = Date.now();
            clearTimeout(timer);
            timer = limit && setTimeout(stop, limit * 1000, "isTimeOut");
        };
        listen();
        for (const stream of [child.stdout, child.stderr]) {
            createInterface({ input: stream }).on("line", (line) => {
                result.lines.push(line);
                listen();
                if (!result.isStopped && hear?.(line))
                    stop("isStopped");
            });
        }
        running.add(child);
        child.on("error", (error) => fail(`${command}: ${error.message}`));
        child.on("close", (status) => {
            listen();
            clearTimeout(timer);
            running.delete(child);
            done({ ...result, status });
        });
    });
}

// A private copy of the sources with a build tree of its own.
class Workshop {
    constructor(name) {
        this.folder = join(folder, name);
        this.source = join(this.folder, "source");
        this.build = join(this.folder, "build");
        this.scratch = join(this.folder, "scratch");
    }

    // Takes over what the person's tree has, and nothing of what an interrupted run has left.
    copySources(files) {
        const wantedFiles = new Set(files);
        fs.mkdirSync(this.source, { recursive: true });
        for (const entry of fs.readdirSync(this.source, { recursive: true })) {
            if (fs.lstatSync(join(this.source, entry)).isFile() && !wantedFiles.has(entry))
                fs.rmSync(join(this.source, entry));
        }
        for (const file of files) {
            const [from, to] = [join(root, file), join(this.source, file)];
            if (fs.existsSync(to) && fs.readFileSync(from).equals(fs.readFileSync(to)))
                continue;
            fs.mkdirSync(dirname(to), { recursive: true });
            fs.copyFileSync(from, to);
        }
    }

    ninja(targets, hear) {
        const cache = process.env.CCACHE_DIR ?? join(folder, "ccache");
        const env = { CCACHE_DIR: cache, CCACHE_BASEDIR: this.folder, CCACHE_NOHASHDIR: "1" };
        return run("ninja", ["-C", this.build, `-j${jobs}`, ...targets], { env, hear });
    }

    async prepare() {
        const query = join(this.build, ".cmake/api/v1/query/codemodel-v2");
        fs.mkdirSync(dirname(query), { recursive: true });
        fs.writeFileSync(query, "");
        const has = (program) => process.env.PATH.split(":").some((path) => fs.existsSync(join(path, program)));
        // As in the preset dev, so that the tests take the time that they have, but without what debuggers want to know.
        const options = { CMAKE_BUILD_TYPE: "Debug", CMAKE_CXX_FLAGS_DEBUG: "-O1 -w", LINKLIST_WERROR: "OFF" };
        if (has("ccache"))
            options.CMAKE_CXX_COMPILER_LAUNCHER = "ccache";
        if (has("ld.gold"))
            for (const kind of ["EXE", "MODULE"])
                options[`CMAKE_${kind}_LINKER_FLAGS`] = "-fuse-ld=gold";
        const configured = await run("cmake", ["-S", this.source, "-B", this.build, "-G", "Ninja",
            ...Object.entries(options).map(([name, value]) => `-D${name}=${value}`)]);
        if (configured.status !== 0)
            fail(`the copy cannot be configured\n${configured.lines.join("\n")}`);
        let shown = 0;
        const built = await this.ninja([], (line) => {
            const [, at, of] = /^\[(\d+)\/(\d+)\]/.exec(line) ?? [];
            if (Number(at) >= shown + 50) {
                shown = Number(at);
                console.log(`build ${basename(this.folder)}: ${at} of ${of}`);
            }
        });
        if (built.status !== 0)
            fail(`the copy cannot be built\n${built.lines.slice(-40).join("\n")}`);
    }

    // Runs a command where it can write nothing but this build tree and a folder of its own in place of /tmp, and
    // reaches no network: a program without its checks may delete and send what it likes.
    sandboxed(command, { folder: at = this.build, env, ...options } = {}) {
        fs.rmSync(this.scratch, { recursive: true, force: true });
        fs.mkdirSync(this.scratch);
        fs.chmodSync(this.scratch, 0o1777);
        for (const name of ["home", "runtime"])
            fs.mkdirSync(join(this.scratch, name), { mode: 0o700 });
        const own = {
            HOME: "/tmp/home", XDG_RUNTIME_DIR: "/tmp/runtime", TMPDIR: "/tmp",
            DBUS_SESSION_BUS_ADDRESS: undefined, DISPLAY: undefined, WAYLAND_DISPLAY: undefined,
        };
        return run("prlimit", ["--data=4294967296", "--core=0", "bwrap", "--ro-bind", "/", "/", "--dev", "/dev",
            "--proc", "/proc", "--bind", this.scratch, "/tmp", "--ro-bind", this.source, this.source,
            "--bind", this.build, this.build, "--unshare-pid", "--unshare-net", "--die-with-parent",
            // As root the tests can do what only root can.
            ...(process.getuid() === 0 ? ["--cap-add", "ALL"] : []), "--chdir", at, "--", ...command],
        { ...options, env: { ...env, ...own } });
    }

    // How a test ends: { by: who failed, a function, or the test where it does not say; undefined when it passes }.
    // It has no time limit but `limit`, since the one that ctest keeps does not know how busy this machine is.
    async test({ name, limit }) {
        const { command, properties } = this.tests.get(name);
        let by;
        const hear = (line) => {
            by ??= /^(?:FAIL!|XPASS|QFATAL)\s*: (.*?\))(?= |$)/.exec(line)?.[1];
            return by !== undefined;
        };
        const env = Object.fromEntries((properties.ENVIRONMENT ?? []).map((text) => text.split(/=([^]*)/)));
        const begin = Date.now();
        const result = await this.sandboxed(command, { limit, hear, env, folder: properties.WORKING_DIRECTORY });
        const expected = properties.PASS_REGULAR_EXPRESSION;
        const passes = expected ? expected.some((text) => new RegExp(text, "s").test(result.lines.join("\n")))
            : result.status === 0 || result.status === properties.SKIP_RETURN_CODE;
        by = result.isTimeOut ? `${name} (time)` : by ?? (passes ? undefined : name);
        return { by, seconds: (Date.now() - begin) / 1000, silence: result.silence };
    }

    async readTests() {
        const listed = (await run("ctest", ["--test-dir", this.build, "--show-only=json-v1"])).lines.join("\n");
        const known = [
            "ENVIRONMENT", "LABELS", "PASS_REGULAR_EXPRESSION", "SKIP_RETURN_CODE", "TIMEOUT", "WORKING_DIRECTORY",
        ];
        this.tests = new Map(JSON.parse(listed).tests.map(({ name, command, properties }) => {
            const unknown = properties.find((property) => !known.includes(property.name));
            if (unknown)
                fail(`${name}: what ${unknown.name} means is not known here`);
            const values = properties.map((property) => [property.name, property.value]);
            return [name, { command, properties: Object.fromEntries(values) }];
        }));
    }
}

// What CMake says: the files of the targets that the loadable module is made of, and which objects are made of each.
async function product(workshop) {
    const reply = join(workshop.build, ".cmake/api/v1/reply");
    const load = (name) => JSON.parse(read(join(reply, name)));
    const index = fs.readdirSync(reply).filter((name) => name.startsWith("index-")).sort().at(-1);
    const model = load(load(index).reply["codemodel-v2"].jsonFile).configurations[0];
    const targets = new Map(model.targets.map(({ id, jsonFile }) => [id, load(jsonFile)]));
    const parts = new Set([...targets].filter(([, target]) => target.type === "MODULE_LIBRARY").map(([id]) => id));
    for (const id of parts)
        (targets.get(id).dependencies ?? []).forEach((dependency) => parts.add(dependency.id));
    const isProduct = ({ type }) => /_LIBRARY$/.test(type) && type !== "INTERFACE_LIBRARY";
    const libraries = [...parts].map((id) => targets.get(id)).filter(isProduct);
    const names = libraries.map(({ name }) => name);
    const isCompiled = ({ compileGroupIndex, isGenerated }) => compileGroupIndex !== undefined && !isGenerated;
    const compiled = new Set(libraries.flatMap((library) => library.sources.filter(isCompiled)).map(({ path }) => path));

    const objects = new Map();
    let object;
    for (const line of (await run("ninja", ["-C", workshop.build, "-t", "deps"])).lines) {
        const [, output] = /^(\S.*): #deps .*\(VALID\)/.exec(line) ?? [];
        if (!line.startsWith(" "))
            object = names.some((name) => `/${output}`.includes(`/CMakeFiles/${name}.dir/`)) ? output : undefined;
        if (!object || !line.startsWith("    "))
            continue;
        const path = relative(workshop.source, resolve(workshop.build, line.trim()));
        if (!path.startsWith("..") && (compiled.has(path) || path.endsWith(".h")))
            objects.set(path, [...(objects.get(path) ?? []), object]);
    }
    const missing = [...compiled].filter((file) => !objects.has(file));
    if (missing.length || !compiled.size)
        fail(`no objects are known of ${missing.join(" ") || "any source"}`);
    return { objects, names };
}

function allTests({ tests, build }) {
    return [...tests].map(([name, { command, properties }]) => ({
        name,
        labels: properties.LABELS ?? [],
        // Built by itself, where the test is a program of the tree.
        target: command[0].startsWith(`${build}/`) ? relative(build, command[0]) : undefined,
    })).filter(({ labels }) => !labels.includes("slow"));
}

const stem = (path) => basename(path).replace(/\.\w+$/, "");

// The classes that a file may belong to: its own; for a part of a class that of the header which it includes first.
function classesOf(file, sources) {
    const header = file.endsWith(".cpp") && /^#include "([^"]+)"/m.exec(sources.get(file))?.[1];
    return [...new Set([stem(file), stem(header || file)])];
}

// Which tests ask about a file, before all others are tried.
function testsOf(file, tests, sources) {
    const ofClass = (name) => {
        const exact = tests.filter((test) => test.name === `tst_${name}`);
        const longer = new RegExp(`^tst_${name}[A-Z_]`);
        return exact.concat(tests.filter((test) => longer.test(test.name)));
    };
    const found = classesOf(file, sources).map(ofClass).find(({ length }) => length > 0);
    if (found)
        return found;
    // A class without a test of its own is asked about through those that use it.
    const header = file.replace(/\.cpp$/, ".h");
    const users = [...sources.keys()].filter((path) => sources.get(path).includes(`#include "${header}"`));
    return [...new Set(users.flatMap((path) => tests.filter((test) => test.name === `tst_${stem(path)}`)))];
}

function oneLine(text) {
    const short = text.replace(/\s+/g, " ").trim();
    return short.length > 60 ? `${short.slice(0, 57)}...` : short || "nothing";
}

// A change as a unified diff with three lines around it.
function difference(source, mutation) {
    const { file } = mutation;
    const [before, after] = [source, mutated(source, mutation)].map((text) => text.split("\n"));
    const first = source.slice(0, mutation.start).split("\n").length - 1;
    const removed = source.slice(mutation.start, mutation.end).split("\n").length;
    const added = mutation.after.split("\n").length;
    const from = Math.max(0, first - 3);
    const behind = before.slice(first + removed, first + removed + 3);
    const count = first - from + behind.length;
    const marked = (mark, lines) => lines.map((line) => mark + line);
    return [`--- a/${file}`, `+++ b/${file}`, `@@ -${from + 1},${count + removed} +${from + 1},${count + added} @@`,
        ...marked(" ", before.slice(from, first)), ...marked("-", before.slice(first, first + removed)),
        ...marked("+", after.slice(first, first + added)), ...marked(" ", behind), ""].join("\n");
}

for (const [signal, status] of [["SIGHUP", 129], ["SIGINT", 130], ["SIGTERM", 143]]) {
    process.on(signal, () => {
        running.forEach((child) => child.kill("SIGKILL"));
        console.log(`\ninterrupted; ./test --mutants ${wanted} ${seed} goes on`);
        process.exit(status);
    });
}

console.log(`${wanted} mutants, seed ${seed}`);
const listed = execFileSync("git", ["-C", root, "ls-files", "-z", "--cached", "--others", "--exclude-standard"]);
const files = String(listed).split("\0").filter((file) => file && fs.existsSync(join(root, file)));
const workshops = Array.from({ length: Math.min(2, jobs) }, (_, i) => new Workshop(String(i + 1)));
for (const workshop of workshops) {
    workshop.copySources(files);
    await workshop.prepare();
    await workshop.readTests();
    const empty = await workshop.sandboxed(["true"]);
    if (empty.status !== 0)
        fail(`mutants run in a sandbox only, and there is none:\n${empty.lines.join("\n")}`);
}

const { objects, names } = await product(workshops[0]);
// What was copied counts, also when the person goes on editing.
const copy = workshops[0].source;
const sources = new Map([...objects.keys()].sort().map((file) => [file, read(join(copy, file))]));
for (const workshop of workshops) {
    workshop.digests = new Map([...new Set([...objects.values()].flat())]
        .map((object) => [object, digest([fs.readFileSync(join(workshop.build, object))])]));
}
const productDigest = digest([...sources].flat());
const testsDigest = digest(files.filter((file) => !sources.has(file) && !/\.md$|^docs\/|^tests\/mutants\//.test(file))
    .flatMap((file) => [file, fs.readFileSync(join(copy, file))]));

// The programs as they are: all tests pass, and how long each one takes.
const tests = allTests(workshops[0]);
const quietPath = join(folder, "quiet.json");
const quiet = fs.existsSync(quietPath) ? JSON.parse(read(quietPath)) : {};
if (quiet.of !== productDigest + testsDigest) {
    console.log(`${tests.length} tests without any mutant`);
    quiet.tests = {};
    const left = [...tests];
    const failed = [];
    await Promise.all(workshops.map(async (workshop) => {
        for (let test = left.shift(); test; test = left.shift()) {
            const { by, ...times } = await workshop.test({ ...test, limit: 600 });
            quiet.tests[test.name] = times;
            if (by)
                failed.push(by);
        }
    }));
    if (failed.length)
        fail(`without any mutant there fail: ${failed.join(" ")}`);
    quiet.of = productDigest + testsDigest;
    fs.writeFileSync(quietPath, JSON.stringify(quiet));
}
for (const test of tests) {
    const { seconds, silence } = quiet.tests[test.name];
    test.seconds = seconds;
    test.limit = Math.max(20, 5 * silence);
    const path = join(copy, "tests", `${test.name}.cpp`);
    test.source = fs.existsSync(path) ? read(path) : "";
}
tests.sort((a, b) => a.seconds - b.seconds);

// A mutant's end: { result: "killed", by }, or one of "survived", "does not compile" and "same object".
async function judge(workshop, mutation) {
    const { file } = mutation;
    const made = objects.get(file);
    const build = async (targets) => {
        const built = await workshop.ninja(targets);
        if (built.status !== 0 && !built.lines.some((line) => /error:|undefined reference|ld returned/.test(line)))
            fail(`the build of a mutant failed for another reason\n${built.lines.slice(-20).join("\n")}`);
        return built.status === 0;
    };
    if (!(await build(made)))
        return { result: "does not compile" };
    if (made.every((object) => workshop.digests.get(object) === digest([fs.readFileSync(join(workshop.build, object))])))
        return { result: "same object" };

    // Who fails each of so many times. Once is not enough: on a busy machine a test may fail by itself, and far from
    // the fault such a failure would end the whole search.
    const failsEach = async (times, test) => {
        let by;
        for (let i = 0; i < times; i++) {
            ({ by } = await workshop.test(test));
            if (!by)
                break;
        }
        return by;
    };
    const isQuick = ({ labels }) => labels.includes("unit") || labels.includes("gui");
    const own = testsOf(file, tests, sources);
    const first = own.some(isQuick) ? own.filter(isQuick) : own;
    for (const test of first) {
        if (!(await build([test.target ?? "all"])))
            return { result: "does not compile" };
        const by = await failsEach(2, test);
        if (by)
            return { result: "killed", by };
    }
    if (!(await build([])))
        return { result: "does not compile" };
    const name = new RegExp(`\\b(${classesOf(file, sources).join("|")})\\b`);
    const mentions = (test) => name.test(test.source);
    const quick = tests.filter(isQuick);
    const engine = own.some(isQuick) ? own : tests;
    const others = new Set([...quick.filter(mentions), ...quick, ...engine]);
    for (const test of [...others].filter((one) => !first.includes(one))) {
        const by = await failsEach(3, test);
        if (by)
            return { result: "killed", by };
    }
    return { result: "survived" };
}

// What is known of this seed and these sources. One that was killed stays so; other tests try a survivor again.
const resultsPath = join(folder, `results-${seed}.jsonl`);
const known = new Map();
if (fs.existsSync(resultsPath)) {
    for (const record of read(resultsPath).split("\n").filter(Boolean).map((line) => JSON.parse(line))) {
        if (record.product !== productDigest)
            continue;
        if (record.result !== "survived" || record.tests === testsDigest)
            known.set(record.number, record);
        else
            known.delete(record.number);
    }
}
const records = [];
const isCounted = ({ result }) => result === "killed" || result === "survived";
const writeSurvivors = () => {
    const survivors = records.filter(({ result }) => result === "survived").sort((a, b) => a.number - b.number);
    fs.writeFileSync(join(folder, "survivors.diff"), survivors.map((record) =>
        `# ${record.file}:${record.line} ${record.kind}\n${difference(sources.get(record.file), record)}`).join("\n"));
    return survivors.length;
};

// Puts a mutant in, hears what becomes of it, and puts the source back.
const examine = async (workshop, mutation, number) => {
    const { file, line, kind, before, after } = mutation;
    const path = join(workshop.source, file);
    const begin = Date.now();
    fs.writeFileSync(path, mutated(sources.get(file), mutation));
    const judgement = await judge(workshop, mutation);
    fs.writeFileSync(path, sources.get(file));
    const seconds = Math.round((Date.now() - begin) / 100) / 10;
    const record = { product: productDigest, tests: testsDigest, number, ...mutation, ...judgement, seconds };
    fs.appendFileSync(resultsPath, `${JSON.stringify(record)}\n`);
    records.push(record);
    writeSurvivors();
    const end = { killed: `killed by ${record.by}`, survived: "SURVIVED" }[record.result] ?? record.result;
    const change = `${oneLine(before)} -> ${oneLine(after)}`;
    const at = `${records.filter(isCounted).length}/${wanted} ${file}:${line}`;
    console.log(`${at} ${kind}: ${change}: ${end} (${seconds} s)`);
};

const order = draws(sources, seed);
const underWay = new Set();
let number = 0;
let repeated = 0;
const began = Date.now();
await Promise.all(workshops.map(async (workshop) => {
    for (;;) {
        // No more than could be needed: so the same mutants are drawn however long each one takes.
        if (records.filter(isCounted).length + underWay.size >= wanted) {
            if (!underWay.size)
                return;
            await Promise.race(underWay);
            continue;
        }
        const { value: mutation } = order.next();
        if (!mutation)
            return;
        number++;
        const record = known.get(number);
        if (record && ["file", "start", "end", "after"].every((key) => record[key] === mutation[key])) {
            repeated++;
            records.push(record);
            continue;
        }
        const job = examine(workshop, mutation, number);
        underWay.add(job);
        await job.finally(() => underWay.delete(job));
    }
}));

const count = (result) => records.filter((record) => record.result === result).length;
const survived = writeSurvivors();
const killed = count("killed");
const timeOuts = records.filter(({ by }) => by?.endsWith(" (time)")).length;
const percent = (n, of) => (of ? `${((100 * n) / of).toFixed(1)} %` : "none");
console.log(`\nseed ${seed}: ${names.join(", ")}; ${sources.size} files`);
console.log(`drawn ${records.length}: ${killed + survived} that count, ${count("does not compile")} that do not compile, ${
    count("same object")} with the same object${repeated ? `; ${repeated} known from before` : ""}`);
const share = percent(killed, killed + survived);
console.log(`killed ${killed} (${timeOuts} of them by time), survived ${survived}: ${share} killed`);
for (const kind of [...new Set(records.filter(isCounted).map((record) => record.kind))].sort()) {
    const all = records.filter((record) => isCounted(record) && record.kind === kind).length;
    const dead = records.filter((record) => record.result === "killed" && record.kind === kind).length;
    console.log(`  ${kind.padEnd(10)} ${String(dead).padStart(4)} of ${String(all).padStart(4)}  ${percent(dead, all)}`);
}
const minutes = (Date.now() - began) / 60000;
console.log(`${minutes.toFixed(1)} minutes${survived ? "; the survivors are in build/mutants/survivors.diff" : ""}`);
