// Values as people want to read them. Nothing that is asked of a value may stop the listing.
(function () {
    "use strict";
    const kDepth = 3;
    const kMostItems = 100;
    const kMostText = 10000;
    const kWidth = 76;
    const { getOwnPropertyDescriptor, getPrototypeOf, keys, getOwnPropertySymbols } = Object;
    const { isArray } = Array;
    const { stringify } = JSON;
    const uncurried = (method) => Function.prototype.call.bind(method);
    const isEnumerable = uncurried(Object.prototype.propertyIsEnumerable);
    const toISOString = uncurried(Date.prototype.toISOString);
    const join = uncurried(Array.prototype.join);
    const push = uncurried(Array.prototype.push);
    const includes = uncurried(Array.prototype.includes);
    const regExpText = uncurried(RegExp.prototype.toString);
    const symbolText = uncurried(Symbol.prototype.toString);
    const functionText = uncurried(Function.prototype.toString);
    const test = uncurried(RegExp.prototype.test);
    const slice = uncurried(String.prototype.slice);

    const quoted = (text) => {
        const shown = text.length > kMostText ? slice(text, 0, kMostText) : text;
        return stringify(shown) + (shown === text ? "" : "... " + (text.length - kMostText) + " more characters");
    };
    const keyText = (key) =>
        typeof key === "symbol" ? "[" + symbolText(key) + "]" : test(/^[A-Za-z_$][\w$]*$/, key) ? key : stringify(key);
    const thrownText = (error) => {
        try {
            return "<threw " + (error instanceof Error ? error.message : String(error)) + ">";
        } catch {
            return "<threw>";
        }
    };
    const guarded = (take) => {
        try {
            return take();
        } catch (error) {
            return thrownText(error);
        }
    };
    const classNameOf = (object) => {
        const prototype = getPrototypeOf(object);
        if (prototype === null) {
            const tag = object[Symbol.toStringTag];
            return typeof tag === "string" ? tag : "[null prototype]";
        }
        const maker = prototype.constructor;
        return typeof maker === "function" && typeof maker.name === "string" ? maker.name : "";
    };
    // Own ones, and those that classes offer by enumerable getters, as natives' properties are.
    const keysOf = (object) => {
        const names = keys(object);
        for (const symbol of getOwnPropertySymbols(object)) {
            if (isEnumerable(object, symbol)) {
                push(names, symbol);
            }
        }
        for (let p = getPrototypeOf(object); p !== null && p !== Object.prototype; p = getPrototypeOf(p)) {
            for (const name of keys(p)) {
                if (getOwnPropertyDescriptor(p, name).get && !includes(names, name)) {
                    push(names, name);
                }
            }
        }
        return names;
    };
    const laidOut = (open, parts, close, indent) => {
        if (parts.length === 0) {
            return open + close;
        }
        const line = open + " " + join(parts, ", ") + " " + close;
        const isShort = line.length <= kWidth && !test(/\n/, line);
        return isShort ? line : open + "\n" + indent + "  " + join(parts, ",\n" + indent + "  ") + "\n" + indent + close;
    };
    const functionName = (value) => {
        const kind = test(/^class\b/, functionText(value)) ? "class" : "function";
        const name = getOwnPropertyDescriptor(value, "name")?.value;
        return "[" + kind + (typeof name === "string" && name !== "" ? " " + name : "") + "]";
    };
    const cut = (parts, count, what) => {
        if (count > kMostItems) {
            push(parts, "... " + (count - kMostItems) + " more " + what);
        }
    };

    function shownObject(value, depth, above, indent) {
        if (includes(above, value)) {
            return "[circular]";
        }
        if (typeof value === "function" && keys(value).length === 0) {
            return functionName(value);
        }
        if (value instanceof Date) {
            return guarded(() => toISOString(value));
        }
        if (value instanceof RegExp) {
            return guarded(() => regExpText(value));
        }
        if (value instanceof Error) {
            const text = guarded(() => String(value));
            const extra = keys(value);
            if (extra.length === 0 || depth < 0) {
                return text;
            }
        }
        const name = classNameOf(value);
        if (depth < 0) {
            return isArray(value) ? "[array]" : "[" + (name === "" ? "object" : name) + "]";
        }
        const within = [...above, value];
        const inner = indent + "  ";
        const one = (item) => shown(item, depth - 1, within, inner);
        const parts = [];
        if (isArray(value) || ArrayBuffer.isView(value)) {
            const count = value.length ?? value.byteLength;
            for (let i = 0; i < count && i < kMostItems; ++i) {
                push(parts, i in value || !isArray(value) ? guarded(() => one(value[i])) : "<empty>");
            }
            cut(parts, count, "items");
            return (isArray(value) ? "" : name + "(" + count + ") ") + laidOut("[", parts, "]", indent);
        }
        if (value instanceof ArrayBuffer) {
            return "ArrayBuffer(" + value.byteLength + ")";
        }
        if (value instanceof Map || value instanceof Set) {
            let i = 0;
            for (const item of value) {
                if (i++ < kMostItems) {
                    push(parts, value instanceof Map ? one(item[0]) + " => " + one(item[1]) : one(item));
                }
            }
            cut(parts, value.size, "items");
            return name + "(" + value.size + ") " + laidOut("{", parts, "}", indent);
        }
        const names = keysOf(value);
        for (let i = 0; i < names.length && i < kMostItems; ++i) {
            push(parts, keyText(names[i]) + ": " + guarded(() => one(value[names[i]])));
        }
        cut(parts, names.length, "members");
        const title =
            value instanceof Error ? guarded(() => String(value)) : typeof value === "function" ? functionName(value) : name;
        return (title === "" || title === "Object" ? "" : title + " ") + laidOut("{", parts, "}", indent);
    }

    function shown(value, depth, above, indent) {
        switch (typeof value) {
            case "string":
                return quoted(value);
            case "bigint":
                return value + "n";
            case "symbol":
                return symbolText(value);
            case "number":
                return Object.is(value, -0) ? "-0" : String(value);
            case "object":
            case "function":
                return value === null ? "null" : guarded(() => shownObject(value, depth, above, indent));
            default:
                return String(value);
        }
    }

    const inspect = (value) => shown(value, kDepth - 1, [], "");
    return {
        inspect,
        // Texts stand as they are where they are a line's own.
        line(...values) {
            const parts = [];
            for (const value of values) {
                push(parts, typeof value === "string" ? value : inspect(value));
            }
            return join(parts, " ");
        },
    };
});
