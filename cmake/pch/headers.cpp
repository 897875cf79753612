// Only there to carry the precompiled header that all libraries share.
