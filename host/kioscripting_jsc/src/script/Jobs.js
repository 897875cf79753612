// Watches over the jobs of promises. The engine asks whether to go on only within one job, so a chain of short
// ones would never be asked; two jobs of ours run among them, one right after the other.
(function (native) {
    "use strict";
    const { tick } = native;
    const kGoOn = 1;
    const kEnd = 2;

    const watch = async (which) => {
        for (;;) {
            const answer = tick(which);
            if (answer === kEnd) {
                for (;;); // within one job: here the engine asks, and ends the run
            }
            if (answer !== kGoOn) {
                return;
            }
            await undefined;
        }
    };
    return {
        watchJobs() {
            watch(0);
            watch(1);
        },
    };
});
