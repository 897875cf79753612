// Errors from natives to scripts, and from scripts to whoever ran them.
(function () {
    "use strict";
    const { defineProperty } = Object;
    const filter = Function.prototype.call.bind(Array.prototype.filter);
    const split = Function.prototype.call.bind(String.prototype.split);
    const join = Function.prototype.call.bind(Array.prototype.join);
    const includes = Function.prototype.call.bind(String.prototype.includes);
    const exec = Function.prototype.call.bind(RegExp.prototype.exec);
    const kOurs = "kio:";
    const kPlace = /^(?:.*@)?(.*?):(\d+):(\d+)$/;
    const Kinds = { Error, TypeError, SyntaxError };

    const Coded = class extends class {
        constructor(object) {
            return object;
        }
    } {
        #code;
        constructor(object, code) {
            super(object);
            this.#code = code;
        }
        static of(object) {
            return #code in object ? object.#code : undefined;
        }
    };

    // Without the calls that lie between a script and its natives.
    const cleaned = (stack) =>
        typeof stack === "string" ? filter(split(stack, "\n"), (line) => !includes(line, kOurs)) : [];
    const placeOf = (lines) => {
        for (const line of lines) {
            const parts = exec(kPlace, line);
            if (parts) {
                return { file: parts[1], line: +parts[2], column: +parts[3] };
            }
        }
        return undefined;
    };
    const hide = (object, name, value) =>
        defineProperty(object, name, { value, writable: true, configurable: true });
    const isObject = (value) => (typeof value === "object" && value !== null) || typeof value === "function";
    const tried = (take) => {
        try {
            return take();
        } catch {
            return undefined;
        }
    };

    return {
        makeError(kind, message, code) {
            const error = new Kinds[kind](message);
            const lines = cleaned(error.stack);
            const place = placeOf(lines);
            hide(error, "stack", join(lines, "\n"));
            if (place) {
                hide(error, "line", place.line);
                hide(error, "column", place.column);
                hide(error, "sourceURL", place.file);
            }
            if (code !== undefined) {
                defineProperty(error, "code", { value: code, enumerable: true, writable: true, configurable: true });
                new Coded(error, code);
            }
            return error;
        },
        // [text, code, file, line, column, stack] of whatever was thrown; nothing that is asked may throw.
        facts(thrown) {
            if (!isObject(thrown)) {
                return [tried(() => "uncaught " + (typeof thrown === "string" ? thrown : String(thrown)))];
            }
            const name = tried(() => thrown.name);
            const message = tried(() => thrown.message);
            const code = Coded.of(thrown);
            const isError = tried(() => thrown instanceof Error) === true;
            let text = undefined;
            if (isError) {
                text = typeof message === "string" ? message : "";
                if (code === undefined && typeof name === "string" && name !== "Error" && name !== "") {
                    text = text === "" ? name : name + ": " + text;
                } else if (text === "") {
                    text = tried(() => String(thrown)) ?? "Error";
                }
            }
            const lines = cleaned(tried(() => thrown.stack));
            let place = isError
                ? tried(() => ({ file: thrown.sourceURL, line: thrown.line, column: thrown.column }))
                : undefined;
            if (!place || typeof place.line !== "number" || includes(String(place.file), kOurs)) {
                place = placeOf(lines);
            } else {
                // Of a text that is no script the engine tells the line, but the column of who had it read.
                const first = placeOf(lines);
                if (!first || first.line !== place.line || first.file !== place.file) {
                    place.column = 0;
                }
            }
            return [
                text,
                typeof code === "number" ? code : undefined,
                typeof place?.file === "string" ? place.file : undefined,
                typeof place?.line === "number" ? place.line : 0,
                typeof place?.column === "number" ? place.column : 0,
                join(lines, "\n"),
            ];
        },
    };
});
