// Makes the classes that scripts see. Every instance is an ordinary object that carries its native in a private
// field, which nothing but this file can reach.
(function (native) {
    "use strict";
    const { construct, read, call, refuse } = native;
    const { create, defineProperty } = Object;
    const defineAll = (object, values) => {
        for (const name in values) {
            defineProperty(object, name, { value: values[name], configurable: true });
        }
    };

    // What a constructor returns is what its derived classes add their fields to.
    const Itself = class {
        constructor(object) {
            return object;
        }
    };
    const Carrier = class extends Itself {
        #handle;
        constructor(object, handle) {
            super(object);
            this.#handle = handle;
        }
        static of(object) {
            return #handle in object ? object.#handle : undefined;
        }
    };
    const Named = class extends Itself {
        #name;
        constructor(object, name) {
            super(object);
            this.#name = name;
        }
        static of(object) {
            return #name in object ? object.#name : undefined;
        }
    };
    const handleOf = Carrier.of;
    const isObject = (value) => (typeof value === "object" && value !== null) || typeof value === "function";
    const getterOf = (member) => function () {
        return read(isObject(this) ? handleOf(this) : undefined, member);
    };

    return {
        handleOf: (value) => (isObject(value) ? handleOf(value) : undefined),
        nameOf: (value) => (isObject(value) ? Named.of(value) : undefined),

        // properties and methods: name, member, name, member...; length in front of a method's member.
        defineClass(name, qualifiedName, length, binding, isConstructible, properties, methods) {
            const made = isConstructible
                ? {
                      [name]: class {
                          constructor(...inArguments) {
                              new Carrier(this, construct(this, binding, ...inArguments));
                          }
                      },
                  }[name]
                : {
                      [name]: class {
                          constructor() {
                              refuse(binding);
                          }
                      },
                  }[name];
            const prototype = made.prototype;
            for (let i = 0; i < properties.length; i += 2) {
                const getter = getterOf(properties[i + 1]);
                defineAll(getter, { name: "get " + properties[i] });
                defineProperty(prototype, properties[i], { get: getter, enumerable: true, configurable: true });
            }
            for (let i = 0; i < methods.length; i += 3) {
                const member = methods[i + 2];
                const method = {
                    [methods[i]](...inArguments) {
                        return call(isObject(this) ? handleOf(this) : undefined, member, ...inArguments);
                    },
                }[methods[i]];
                defineAll(method, { length: methods[i + 1] });
                defineProperty(prototype, methods[i], { value: method, writable: true, configurable: true });
            }
            defineProperty(prototype, Symbol.toStringTag, { value: name, configurable: true });
            defineAll(made, { length, toString: () => "class " + name + " { [native code] }" });
            new Named(made, qualifiedName);
            return made;
        },
        // An object of a class for a native that was made elsewhere.
        wrap(prototype, handle) {
            const object = create(prototype);
            new Carrier(object, handle);
            return object;
        },
        // Puts a class, or a namespace, where its path says, making what is missing on the way.
        publish(path, value) {
            let place = globalThis;
            let soFar = "";
            for (let i = 0; i < path.length - 1; ++i) {
                const name = path[i];
                soFar += (i === 0 ? "" : ".") + name;
                if (!isObject(place[name])) {
                    const space = create(null);
                    defineProperty(space, Symbol.toStringTag, { value: soFar });
                    new Named(space, soFar);
                    defineProperty(place, name, { value: space, enumerable: i > 0, configurable: true });
                }
                place = place[name];
            }
            defineProperty(place, path[path.length - 1], { value, enumerable: true, configurable: true });
        },
        defineGlobal(name, value) {
            defineProperty(globalThis, name, { value, enumerable: true, configurable: true });
        },
    };
});
