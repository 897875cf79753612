// `require` as modules and scripts have it.
(function (native) {
    "use strict";
    const { load } = native;
    const { defineProperty } = Object;
    const { parse } = JSON;

    const makeRequire = (file) => function require(name) {
        return load(file, name);
    };
    return {
        makeRequire,
        makeModule: (path) => ({ id: path, filename: path, exports: {}, loaded: false }),
        run(module, compiled, folder) {
            compiled.call(module.exports, module.exports, makeRequire(module.id), module, module.id, folder);
            module.loaded = true;
        },
        runData(module, text) {
            try {
                module.exports = parse(text);
            } catch (error) {
                throw new SyntaxError(module.id + ": " + error.message);
            }
            module.loaded = true;
        },
        defineRequire(require) {
            defineProperty(globalThis, "require", { value: require, writable: true, configurable: true });
        },
    };
});
