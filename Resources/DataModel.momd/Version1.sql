-- The notebook store as it was first shipped: one wide row per note, the steps text in it.

CREATE TABLE NotebookEntry(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    graph TEXT,
    isFavorite INTEGER,
    lastCached INTEGER,
    lastChange INTEGER,
    notes TEXT,
    problem TEXT,
    remoteID TEXT,
    savedFrom TEXT,
    stepsData TEXT,
    topic TEXT,
    url TEXT
) STRICT;
CREATE INDEX NotebookEntryRemoteID ON NotebookEntry(remoteID);
CREATE INDEX NotebookEntryProblem ON NotebookEntry(problem);

CREATE TABLE NotebookEntryTag(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    tagText TEXT
) STRICT;
CREATE INDEX NotebookEntryTagText ON NotebookEntryTag(tagText);

CREATE TABLE NotebookEntryTags(
    entry INTEGER NOT NULL,
    tag INTEGER NOT NULL,
    PRIMARY KEY(entry, tag)
) STRICT;
