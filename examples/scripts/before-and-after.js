// Compares a clip's frame before and after an effect:
//   trhost script before-and-after.js clip.mp4 frei0r.glow 1.5 OUTPUT-FOLDER
// Writes before.png, after.png and difference.png; ends with status 1 when the effect has changed nothing.
"use strict";

const [clipPath, effectName, seconds = "0", folder = "."] = host.arguments;
if (!clipPath || !effectName) {
    throw new Error("expected: CLIP EFFECT [SECONDS [OUTPUT-FOLDER]]");
}

const clip = media.open(clipPath);
console.log(`${clip.path}: ${clip.width} x ${clip.height}, ${clip.framesPerSecond} frames a second`);

const before = clip.frameAt(Number(seconds)).converted("bgra8");
const after = effects.run(effectName, before).converted("bgra8");
before.save(`${folder}/before.png`);
after.save(`${folder}/after.png`);

const comparison = new Halcyon.TRFoundation.PixelComparison();
const results = comparison.pixelCompare(`${folder}/before.png`, `${folder}/after.png`);
console.log(`result        ${results.result}`);
console.log(`numDiffPixels ${results.numDiffPixels}`);
console.log(`variance      ${results.variance} %`);
console.log(`diffData      ${results.diffData.length} characters`);
if (results.result < 0) {
    throw new Error(`not compared: ${results.result}`);
}

files.writeBase64(`${folder}/difference.png`, results.diffData);
host.setExitStatus(results.numDiffPixels === 0 ? 1 : 0);
