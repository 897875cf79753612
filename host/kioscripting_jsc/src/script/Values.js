// What kind of thing a value is that goes to a native, and what promises come to.
(function () {
    "use strict";
    const { keys } = Object;
    const { isArray } = Array;
    const { isView } = ArrayBuffer;
    const Bytes = Uint8Array;
    const uncurried = (method) => Function.prototype.call.bind(method);
    const then = uncurried(Promise.prototype.then);
    const toISOString = uncurried(Date.prototype.toISOString);
    const isPromise = (value) => typeof value === "object" && value !== null && value instanceof Promise;

    return {
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
        // All of what a view, or a buffer, shows.
        bytesOf: (object) =>
            isView(object)
                ? new Bytes(object.buffer, object.byteOffset, object.byteLength)
                : new Bytes(object),
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
