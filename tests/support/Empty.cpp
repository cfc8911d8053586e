/* A precompiled header belongs to a target, which must have a source. */
