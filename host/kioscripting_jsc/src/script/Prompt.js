// What a text at a prompt can go on with, without running any of the getters on its way.
(function () {
    "use strict";
    const { getOwnPropertyDescriptor, getOwnPropertyNames, getPrototypeOf } = Object;
    const evaluate = globalThis.eval;
    const isObject = (value) => (typeof value === "object" && value !== null) || typeof value === "function";

    const find = (object, name) => {
        for (let at = object; at !== null; at = getPrototypeOf(at)) {
            const descriptor = getOwnPropertyDescriptor(at, name);
            if (descriptor) {
                return descriptor;
            }
        }
        return undefined;
    };
    // Names declared with let, const and class are found by evaluating nothing but the name.
    const first = (name) => {
        const descriptor = find(globalThis, name);
        if (descriptor) {
            return descriptor.value;
        }
        try {
            return evaluate(name);
        } catch {
            return undefined;
        }
    };
    return {
        complete(text) {
            const found = /(?:[A-Za-z_$][\w$]*\.)*[A-Za-z_$]?[\w$]*$/.exec(text);
            const path = found[0];
            const before = text[found.index - 1];
            if (before === "." || (path !== "" && /[0-9]/.test(path[0]))) {
                return [];
            }
            const parts = path.split(".");
            const start = parts.pop();
            let place = globalThis;
            for (let i = 0; i < parts.length; ++i) {
                const value = i === 0 ? first(parts[i]) : find(place, parts[i])?.value;
                if (value === null || value === undefined) {
                    return [];
                }
                place = isObject(value) ? value : Object(value);
            }
            const front = parts.map((part) => part + ".").join("");
            const names = new Set();
            for (let at = place; at !== null; at = getPrototypeOf(at)) {
                for (const name of getOwnPropertyNames(at)) {
                    if (name.startsWith(start) && /^[A-Za-z_$][\w$]*$/.test(name)) {
                        names.add(front + name);
                    }
                }
            }
            return [...names].sort();
        },
    };
});
