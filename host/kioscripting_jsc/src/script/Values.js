// What kind of thing a value is that goes to a native, and what promises come to.
(function () {
    "use strict";
    const { keys } = Object;
    const { isArray } = Array;
    const { isView } = ArrayBuffer;
    const uncurried = (method) => Function.prototype.call.bind(method);
    const then = uncurried(Promise.prototype.then);
    const toISOString = uncurried(Date.prototype.toISOString);
    const isPromise = (value) => typeof value === "object" && value !== null && value instanceof Promise;

    return {
        // "array", "bytes", "promise", or an array: of the keys, or of a text that stands for the value.
        kindOf(object) {
            if (isArray(object)) {
                return "array";
            }
            if (isView(object) || object instanceof ArrayBuffer) {
                return "bytes";
            }
            if (object instanceof Date) {
                return "date";
            }
            if (isPromise(object)) {
                return "promise";
            }
            return "plain";
        },
        keys,
        dateText(date) {
            return toISOString(date);
        },
        // An array that will hold ["fulfilled" or "rejected", with what]; undefined for what is no promise.
        watch(value) {
            if (!isPromise(value)) {
                return undefined;
            }
            const outcome = [];
            then(
                value,
                (result) => {
                    outcome[0] = "fulfilled";
                    outcome[1] = result;
                },
                (reason) => {
                    outcome[0] = "rejected";
                    outcome[1] = reason;
                },
            );
            return outcome;
        },
    };
});
