// What could be wrong in a C++ source: its tokens, the small faults that can be put into it, and a fair draw of them.
// It relies on the formatting that clang-format keeps: binary operators stand between blanks, the brackets of a
// template and the * and & of a type do not. What it takes for code wrongly does not compile and is drawn anew.

const punctuators = [
    "<<=", ">>=", "<=>", "->*", "...", "::", "->", ".*", "++", "--", "<<", ">>", "<=", ">=", "==", "!=", "&&", "||",
    "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=",
];
const rawString = /(?:u8|[uUL])?R"([^()\\\s]{0,16})\([^]*?\)\1"\w*/y;
const plainString = /(?:u8|[uUL])?"(?:[^"\\\n]|\\[^])*"\w*/y;
const character = /(?:u8|[uUL])?'(?:[^'\\\n]|\\[^])+'/y;
const number = /\.?\d(?:[eEpP][+-]|'?\w|\.)*/y;
const identifier = /[A-Za-z_]\w*/y;
const patterns = {
    string: [rawString, plainString], character: [character], number: [number], identifier: [identifier],
};
const comment = /\/\/(?:\\\r?\n|[^\n])*|\/\*[^]*?(?:\*\/|$)/y;
const directive = /#(?:\/\*[^]*?\*\/|\\\r?\n|[^\n])*/y;

// The tokens of a source, without comments and preprocessor lines.
export function tokenize(source) {
    const tokens = [];
    let at = 0;
    let line = 1;
    let lineIsEmpty = true;
    const match = (pattern) => {
        pattern.lastIndex = at;
        return pattern.exec(source)?.[0];
    };
    const step = (text) => {
        at += text.length;
        for (const c of text)
            line += c === "\n" ? 1 : 0;
    };
    while (at < source.length) {
        const c = source[at];
        if (/\s/.test(c)) {
            lineIsEmpty ||= c === "\n";
            step(c);
            continue;
        }
        const skipped = match(comment) ?? (c === "#" && lineIsEmpty ? match(directive) : undefined);
        if (skipped !== undefined) {
            step(skipped);
            continue;
        }
        lineIsEmpty = false;
        let kind;
        let text;
        for (kind in patterns) {
            text = patterns[kind].map(match).find((found) => found !== undefined);
            if (text !== undefined)
                break;
        }
        if (text === undefined) {
            kind = "punctuator";
            text = punctuators.find((p) => source.startsWith(p, at)) ?? c;
        }
        tokens.push({ kind, text, start: at, end: at + text.length, line });
        step(text);
    }
    return tokens;
}

const closing = { "(": ")", "[": "]", "{": "}" };
const statementWords = new Set([
    "break", "case", "class", "const", "constexpr", "continue", "co_return", "default", "delete", "do", "else", "enum",
    "for", "goto", "if", "namespace", "return", "static", "struct", "switch", "template", "throw", "try", "typedef",
    "union", "using", "while",
]);
const notOperands = new Set([...statementWords, "operator", "new", "co_await", "co_yield", "and", "or", "not"]);
const assignments = new Set(["=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>="]);
// Followed by parentheses: what the compiler or its tools read, and nothing that runs in what is shipped.
const notCode = new RegExp("^(static_assert|decltype|noexcept|alignas|requires|Q_(ASSERT(_X)?|UNUSED|PROPERTY"
    + "|PLUGIN_METADATA|INTERFACES|CLASSINFO|(DECLARE|DISABLE)_\\w+|(ENUM|FLAG)\\w*))$");

// Token by token: where brackets close and open, and which tokens are no code.
function structure(tokens) {
    const partner = new Array(tokens.length).fill(-1);
    const skipped = new Array(tokens.length).fill(false);
    const open = [];
    tokens.forEach((token, i) => {
        if (token.kind !== "punctuator")
            return;
        if (closing[token.text]) {
            open.push(i);
        } else if (open.length && closing[tokens[open.at(-1)].text] === token.text) {
            partner[i] = open.pop();
            partner[partner[i]] = i;
        }
    });
    const skip = (from, to) => skipped.fill(true, from, to + 1);
    const isText = (i, text) => tokens[i]?.text === text;
    const angleEnd = (i) => {
        let depth = 0;
        for (; i < tokens.length; i++) {
            const { text } = tokens[i];
            if ("([{".includes(text) && partner[i] > 0)
                i = partner[i];
            depth += text === "<" ? 1 : text === ">" ? -1 : text === ">>" ? -2 : 0;
            if (depth <= 0)
                return i;
        }
        return tokens.length - 1;
    };
    tokens.forEach(({ kind, text }, i) => {
        if (kind === "identifier" && notCode.test(text) && isText(i + 1, "("))
            skip(i, partner[i + 1]);
        else if (text === "template" && isText(i + 1, "<"))
            skip(i, angleEnd(i + 1));
        else if (text === "using" || text === "typedef" || text === "friend")
            skip(i, Math.max(i, tokens.findIndex((t, j) => j > i && (t.text === ";" || t.text === "{")) - 1));
        else if (text === "extern" && tokens[i + 1]?.kind === "string")
            skip(i, i + 1);
        else if (text === "[" && isText(i + 1, "["))
            skip(i, partner[i]);
    });
    return { partner, skipped };
}

// What each opening brace begins: "namespace", "class", "enum", "value", "block", or a function's body as { returns: the
// tokens before its name, or "lambda" }. The second answer tells of each token whether it is inside a function.
function scopes(tokens, { partner, skipped }) {
    const kinds = new Map();
    const inFunction = new Array(tokens.length).fill(false);
    const stack = [{ kind: "namespace", head: 0 }];
    const isLambdaStart = (i) =>
        tokens[i]?.text === "[" && (i === 0 || !(isOperand(tokens[i - 1]) || tokens[i - 1].text === "["));
    // From the last token before a body backwards, over return type and specifiers, to the ) or ] of its parameters.
    const parametersEnd = (i, from) => {
        let j = i;
        const isSpecifier = ({ kind, text }, k) =>
            kind === "identifier" || /^(::|<|>|>>|\*|&|,|->)$/.test(text) || skipped[k];
        while (j > from && isSpecifier(tokens[j], j))
            j--;
        const between = tokens.slice(j + 1, i + 1).map((t) => t.text);
        const isPlain = between.every((t) => /^(const|mutable|noexcept|override|final|constexpr)$/.test(t));
        return isPlain || between.includes("->") ? j : -1;
    };
    const classify = (i) => {
        const scope = stack.at(-1);
        let { head } = scope;
        while (head < i && skipped[head])
            head++;
        const texts = tokens.slice(head, i).map((t) => t.text);
        const previous = tokens[i - 1];
        const end = i > 0 ? parametersEnd(i - 1, Math.max(head - 1, 0)) : -1;
        if (end >= 0) {
            if (tokens[end].text === "]" && isLambdaStart(partner[end]))
                return { returns: "lambda" };
            const opening = tokens[end].text === ")" ? partner[end] : -1;
            if (opening > 0 && tokens[opening - 1].text === "]" && isLambdaStart(partner[opening - 1]))
                return { returns: "lambda" };
        }
        if (scope.kind === "namespace" || scope.kind === "class") {
            const parentheses = tokens.findIndex((t, j) => j >= head && j < i && t.text === "(" && !skipped[j]);
            if (texts.includes("namespace") || (texts[0] === "extern" && texts.length === 2))
                return "namespace";
            if (texts.includes("enum"))
                return "enum";
            if (parentheses < 0)
                return texts.some((t) => /^(class|struct|union)$/.test(t)) ? "class" : "value";
            const equals = texts.indexOf("=");
            if (equals >= 0 && head + equals < parentheses && !texts.includes("operator"))
                return "value";
            // A member's initial value in braces: the body comes later.
            if (texts.includes(":") && (previous.kind === "identifier" || /^(>|>>)$/.test(previous.text)) && end < 0)
                return "value";
            const name = texts.indexOf("operator") >= 0 ? head + texts.indexOf("operator") : parentheses - 1;
            let before = name;
            while (before > head && (tokens[before - 1].text === "::" || tokens[before - 1].text === "~"
                       || (tokens[before - 1].kind === "identifier" && tokens[before].text === "::")))
                before--;
            return { returns: tokens.slice(head, before).map((t) => t.text)
                .concat(texts.includes("->") ? texts.slice(texts.lastIndexOf("->")) : []) };
        }
        if (scope.kind === "enum" || scope.kind === "value")
            return "value";
        if (!previous || /^(else|do|try|;|\{|\}|:)$/.test(previous.text))
            return "block";
        if (previous.text === ")" && /^(if|for|while|switch|catch|constexpr)$/.test(tokens[partner[i - 1] - 1]?.text))
            return "block";
        return /^(class|struct|union|enum)$/.test(texts[0]) ? (texts[0] === "enum" ? "enum" : "class") : "value";
    };
    for (let i = 0; i < tokens.length; i++) {
        const { text } = tokens[i];
        inFunction[i] = stack.at(-1).kind === "block";
        if (text === "{" && partner[i] > 0) {
            const kind = classify(i);
            kinds.set(i, kind);
            stack.push({ kind: kind.returns ? "block" : kind, head: i + 1, isValue: kind === "value" });
        } else if (text === "}" && stack.length > 1) {
            const left = stack.pop();
            if (!left.isValue)
                stack.at(-1).head = i + 1;
            inFunction[i] = stack.at(-1).kind === "block";
        } else if (text === ";" || (text === ":" && /^(public|protected|private)$/.test(tokens[i - 1]?.text))) {
            stack.at(-1).head = i + 1;
        }
    }
    return { kinds, inFunction };
}

function isOperand(token) {
    return !!token && (token.kind === "identifier" ? !notOperands.has(token.text)
                       : token.kind !== "punctuator" || /^[)\]}]$/.test(token.text));
}

const otherOperators = {
    comparison: {
        "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
        "==": ["!="], "!=": ["=="], "&&": ["||"], "||": ["&&"],
    },
    arithmetic: {
        "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"], "|": ["&"], "&": ["|"],
        "+=": ["-="], "-=": ["+="], "*=": ["/="], "/=": ["*="],
    },
};

// Other numbers of the same kind: one more and one less.
function otherNumbers(text) {
    const digits = text.replaceAll("'", "");
    let found;
    const both = (value, write) => [value + 1n, value - 1n].map((n) => (n < 0n ? `(-${write(-n)})` : write(n)));
    if ((found = /^0([xX])([0-9a-fA-F]+)([uUlLzZ]*)$|^0([bB])([01]+)([uUlLzZ]*)$/.exec(digits))) {
        const [letter, body, suffix] = found.slice(1).filter((group) => group !== undefined);
        const radix = /x/i.test(letter) ? 16 : 2;
        const written = (n) => n.toString(radix).padStart(body.length, "0");
        return both(BigInt(`0${letter}${body}`), (n) => `0${letter}${written(n)}${suffix}`);
    }
    if ((found = /^0([0-7]+)([uUlLzZ]*)$/.exec(digits)))
        return both(BigInt(`0o${found[1]}`), (n) => `0${n.toString(8)}${found[2]}`);
    if ((found = /^(\d+)([A-Za-z_]\w*)?$/.exec(digits)) && !/^[eE]/.test(found[2] ?? "")) {
        const suffix = found[2] ?? "";
        return both(BigInt(found[1]), (n) => `${n}${suffix}`).filter((n) => !(n.startsWith("(") && /u/i.test(suffix)));
    }
    if ((found = /^((?:\d+\.?\d*|\.\d+)(?:[eE][+-]?\d+)?)([A-Za-z_]\w*)?$/.exec(digits))) {
        const write = (n) => (Number.isInteger(n) && Math.abs(n) < 1e15 ? n.toFixed(1) : String(n)) + (found[2] ?? "");
        const value = Number(found[1]);
        return [value + 1, value - 1].filter((n) => n !== value).map((n) => (n < 0 ? `(${write(n)})` : write(n)));
    }
    return [];
}

function otherStrings(text) {
    const raw = /^((?:u8|[uUL])?R")[^(]*\(([^]*)\)[^()]*"(\w*)$/.exec(text);
    if (raw)
        return (raw[2] ? ["", "mutant"] : ["mutant"]).map((other) => `${raw[1]}(${other})"${raw[3]}`);
    const [, before, body, after] = /^([^"]*")([^]*)("\w*)$/.exec(text);
    return (body ? ["", "mutant"] : ["mutant"]).filter((other) => other !== body).map((other) => before + other + after);
}

function otherCharacter(text) {
    const [, before, body] = /^([^']*')([^]*)'$/.exec(text);
    const hasNext = /^[a-yA-Y0-8]$/.test(body);
    return `${before}${hasNext ? String.fromCharCode(body.charCodeAt(0) + 1) : body === "x" ? "y" : "x"}'`;
}

// All the small faults that can be put into that source, in its order:
// { kind, line, start, end, before, after }, where `after` takes the place of source.slice(start, end).
export function mutations(source) {
    const tokens = tokenize(source);
    const tree = structure(tokens);
    const { partner, skipped } = tree;
    const { kinds, inFunction } = scopes(tokens, tree);
    const found = [];
    const add = (kind, first, last, after) => {
        const { start, line } = tokens[first];
        const { end } = tokens[last];
        found.push({ kind, line, start, end, before: source.slice(start, end), after });
    };
    const isBlank = (at) => at < 0 || at >= source.length || /\s/.test(source[at]);
    // The first token from i on, at i's own depth, that `stops` names; brackets are jumped over.
    const find = (i, stops) => {
        for (; i < tokens.length; i++) {
            if (stops(tokens[i].text, i))
                return i;
            if (closing[tokens[i].text] && tokens[i].kind === "punctuator") {
                if (partner[i] < 0)
                    return -1;
                i = partner[i];
            } else if (tokens[i].kind === "punctuator" && /^[)\]}]$/.test(tokens[i].text)) {
                return -1;
            }
        }
        return -1;
    };

    const operators = (i) => {
        const { text, start, end } = tokens[i];
        const isBetweenOperands = isOperand(tokens[i - 1]) && tokens[i + 1] && !assignments.has(tokens[i + 1].text);
        if (isBetweenOperands && isBlank(start - 1) && isBlank(end)) {
            for (const [kind, others] of Object.entries(otherOperators))
                for (const other of Object.hasOwn(others, text) ? others[text] : [])
                    add(kind, i, i, other);
        }
        if (text === "!" && !isBlank(end))
            add("comparison", i, i, "");
        if (text === "-" && !isBlank(end) && !isOperand(tokens[i - 1]))
            add("arithmetic", i, i, "");
        if ((text === "++" || text === "--") && inFunction[i])
            add("arithmetic", i, i, text === "++" ? "--" : "++");
    };

    const constants = (i) => {
        const { kind, text } = tokens[i];
        if (text === "true" || text === "false")
            add("constant", i, i, text === "true" ? "false" : "true");
        const isPureVirtual = text === "0" && tokens[i - 1]?.text === "=" && tokens[i + 1]?.text === ";"
            && /^(\)|const|noexcept|override|final)$/.test(tokens[i - 2]?.text);
        if (kind === "number" && !isPureVirtual)
            otherNumbers(text).forEach((other) => add("constant", i, i, other));
        if (kind === "string")
            otherStrings(text).forEach((other) => add("constant", i, i, other));
        if (kind === "character")
            add("constant", i, i, otherCharacter(text));
    };

    const branches = (i) => {
        const { text } = tokens[i];
        if (text === "if" && tokens[i + 1]?.text === "(" && partner[i + 1] > i + 2) {
            const last = partner[i + 1] - 1;
            const semicolon = find(i + 2, (t, j) => t === ";" || j > last);
            const first = semicolon > 0 && semicolon < last ? semicolon + 1 : i + 2;
            const equals = find(first, (t, j) => t === "=" || j > last);
            if (equals < 0 || equals > last)
                add("branches", first, last, `!(${source.slice(tokens[first].start, tokens[last].end)})`);
        }
        if (text === "?") {
            let nested = 0;
            const colon = find(i + 1, (t) => (t === "?" && nested++ < 0) || (t === ":" && nested-- === 0) || t === ";");
            if (colon < 0 || tokens[colon].text !== ":")
                return;
            nested = 0;
            const end = find(colon + 1, (t) =>
                (t === "?" && nested++ < 0) || (t === ":" && nested-- === 0) || /^[,;)\]}]$/.test(t));
            if (end < colon + 2)
                return;
            const yes = source.slice(tokens[i + 1].start, tokens[colon - 1].end);
            const between = source.slice(tokens[colon - 1].end, tokens[colon + 1].start);
            const no = source.slice(tokens[colon + 1].start, tokens[end - 1].end);
            if (yes !== no)
                add("branches", i + 1, end - 1, no + between + yes);
        }
    };

    // A statement that begins at i and is a call or an assignment, not a declaration: taken out.
    const removedCalls = (i) => {
        const previous = tokens[i - 1];
        const begins = inFunction[i] && previous && (/^(;|\{|\}|else|do)$/.test(previous.text)
            || (previous.text === ":" && tokens[i - 2]?.text !== "?" && isLabel(i - 1))
            || (previous.text === ")" && /^(if|for|while|constexpr)$/.test(tokens[partner[i - 1] - 1]?.text)));
        if (!begins || kinds.has(i) || statementWords.has(tokens[i].text))
            return;
        if (previous.text === "{" && kinds.get(i - 1) === "value")
            return;
        const closed = previous.text === "}" ? kinds.get(partner[i - 1]) : "block";
        if (!/^(block|class)$/.test(closed) && !closed?.returns)
            return;
        let j = tokens[i].text === "Q_EMIT" ? i + 1 : i;
        while (/^(\*|\+\+|--)$/.test(tokens[j]?.text))
            j++;
        let isCall = /^(\+\+|--)$/.test(tokens[j - 1].text);
        if (tokens[j].text === "(" || tokens[j].text === "[")
            j = partner[j] + 1;
        else if (tokens[j].text === "::" || tokens[j].kind === "identifier")
            j = afterPath(j);
        else
            return;
        for (; j < tokens.length; j++) {
            const { text } = tokens[j];
            if (text === "(" || text === "[" || (text === "{" && kinds.get(j) === "value")) {
                isCall ||= text === "(";
                j = partner[j];
            } else if (text === "." || text === "->" || text === "::") {
                j = afterPath(j + 1) - 1;
            } else if (text === "++" || text === "--") {
                isCall = true;
            } else {
                break;
            }
        }
        const isStream = tokens[j]?.text === "<<" && isBlank(tokens[j].end);
        if (j >= tokens.length || !(tokens[j].text === ";" ? isCall : assignments.has(tokens[j].text) || isStream))
            return;
        const end = find(j, (t) => t === ";");
        if (end > i)
            add("removed", i, end - 1, source.slice(tokens[i].start, tokens[end - 1].end).replace(/[^\n]/g, ""));
    };
    // After a name with its scopes and template arguments: a::b<c>.
    const afterPath = (first) => {
        let j = first;
        for (; j < tokens.length; j++) {
            const { text, kind } = tokens[j];
            if (text === "<" && !isBlank(tokens[j].start - 1)) {
                let depth = 0;
                for (let k = j; k < tokens.length && !/^[;{}]$/.test(tokens[k].text); k++) {
                    depth += { "<": 1, ">": -1, ">>": -2 }[tokens[k].text] ?? 0;
                    if (depth <= 0) {
                        j = k;
                        break;
                    }
                }
                if (depth > 0)
                    return j;
            } else if (!(text === "::" || (kind === "identifier"
                             && (j === first || tokens[j - 1].text === "::")))) {
                return j;
            }
        }
        return j;
    };
    const isLabel = (colon) => {
        for (let j = colon - 1; j >= 0 && !/^[;{}?]$/.test(tokens[j].text); j--)
            if (tokens[j].text === "case" || tokens[j].text === "default")
                return true;
        return false;
    };

    const earlyReturns = (i) => {
        const kind = kinds.get(i);
        if (!kind?.returns || partner[i] === i + 1)
            return;
        if (kind.returns === "lambda") {
            const body = tokens.slice(i, partner[i]);
            if (!body.some((t, j) => t.text === "return" && body[j + 1].text !== ";"))
                add("return", i, i, "{ return;");
            return;
        }
        const isSpecifier = (t) => /^(static|inline|constexpr|virtual|explicit|\[|\]|nodiscard|const)$/.test(t);
        const type = kind.returns.filter((t) => !isSpecifier(t));
        if (type.length === 0 || type.at(-1) === "void" || (type[0] === "void" && type.length === 1))
            add("return", i, i, "{ return;");
        else if (!type.includes("&") && !type.includes("&&")) {
            add("return", i, i, "{ return {};");
            if (type.at(-1) === "bool")
                add("return", i, i, "{ return true;");
        }
    };

    tokens.forEach((token, i) => {
        if (skipped[i])
            return;
        if (token.kind === "punctuator")
            operators(i);
        constants(i);
        branches(i);
        removedCalls(i);
        earlyReturns(i);
    });
    return found;
}

export function mutated(source, { start, end, after }) {
    return source.slice(0, start) + after + source.slice(end);
}

// Numbers from 0 up to, and without, 1, the same ones for the same seed.
function randomNumbers(seed) {
    let state = 0x9e3779b9;
    for (const c of String(seed))
        state = Math.imul(state ^ c.codePointAt(0), 0x85ebca6b) >>> 0;
    return () => {
        state = (state + 0x6d2b79f5) >>> 0;
        let x = Math.imul(state ^ (state >>> 15), state | 1);
        x ^= x + Math.imul(x ^ (x >>> 7), x | 61);
        return ((x ^ (x >>> 14)) >>> 0) / 2 ** 32;
    };
}

// Draws from sources, a map of file names to texts, each fault at most once: first a line, all with the same chance
// that have any left, then one of its faults. The same seed and sources give the same draws.
export function* draws(sources, seed) {
    const random = randomNumbers(seed);
    const take = (list) => Math.floor(random() * list.length);
    const lines = [];
    for (const file of [...sources.keys()].sort()) {
        const ofLine = new Map();
        for (const mutation of mutations(sources.get(file)))
            ofLine.set(mutation.line, [...(ofLine.get(mutation.line) ?? []), { file, ...mutation }]);
        lines.push(...ofLine.values());
    }
    while (lines.length > 0) {
        const at = take(lines);
        const [drawn] = lines[at].splice(take(lines[at]), 1);
        if (lines[at].length === 0)
            lines.splice(at, 1);
        yield drawn;
    }
}
