-- The steps texts move to a table of their own, so that lists and refreshes never read past them. What a list
-- needs stands first in a row and long texts last.

CREATE TABLE entries(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    isFavorite INTEGER,
    isCached INTEGER NOT NULL DEFAULT 0,
    lastChange INTEGER,
    remoteID TEXT,
    savedFrom TEXT,
    problem TEXT,
    notes TEXT,
    topic TEXT,
    url TEXT,
    graph TEXT
) STRICT;

CREATE TABLE steps(
    entryID INTEGER PRIMARY KEY REFERENCES entries(id) ON DELETE CASCADE,
    lastCached INTEGER,
    stepsData TEXT NOT NULL
) STRICT;

CREATE TABLE tags(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    tagText TEXT
) STRICT;

CREATE TABLE links(
    entryID INTEGER NOT NULL REFERENCES entries(id) ON DELETE CASCADE,
    tagID INTEGER NOT NULL REFERENCES tags(id) ON DELETE CASCADE,
    PRIMARY KEY(entryID, tagID)
) STRICT, WITHOUT ROWID;

INSERT INTO entries(id, isFavorite, isCached, lastChange, remoteID, savedFrom, problem, notes, topic, url, graph)
    SELECT id, isFavorite, stepsData IS NOT NULL AND lastCached IS NOT NULL, lastChange, remoteID, savedFrom,
           problem, notes, topic, url, graph
    FROM NotebookEntry ORDER BY id;
INSERT INTO steps(entryID, lastCached, stepsData)
    SELECT id, lastCached, stepsData FROM NotebookEntry WHERE stepsData IS NOT NULL ORDER BY id;
INSERT INTO tags(id, tagText) SELECT id, tagText FROM NotebookEntryTag ORDER BY id;
INSERT INTO links(entryID, tagID)
    SELECT entry, tag FROM NotebookEntryTags
    WHERE entry IN (SELECT id FROM entries) AND tag IN (SELECT id FROM tags);
-- A number given out once is not given out again, also when its row is gone.
DELETE FROM sqlite_sequence WHERE name IN ('entries', 'tags');
UPDATE sqlite_sequence SET name = 'entries' WHERE name = 'NotebookEntry';
UPDATE sqlite_sequence SET name = 'tags' WHERE name = 'NotebookEntryTag';

DROP TABLE NotebookEntryTags;
DROP TABLE NotebookEntryTag;
DROP TABLE NotebookEntry;

CREATE INDEX entriesByRemoteID ON entries(remoteID);
CREATE INDEX entriesByProblem ON entries(problem);
CREATE INDEX entriesByLastChange ON entries(lastChange);
CREATE INDEX entriesToCache ON entries(lastChange)
    WHERE isCached = 0 AND savedFrom IS NOT 'Graphing Calculator';
CREATE INDEX tagsByText ON tags(tagText);
CREATE INDEX linksByTag ON links(tagID, entryID);
-- Small enough to count the cached entries by.
CREATE INDEX stepsByLastCached ON steps(lastCached);
