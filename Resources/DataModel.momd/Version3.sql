-- How many entries have steps is asked before every single fetch of steps; with the number at hand the answer
-- takes as long for a full cache as for an empty one.

CREATE TABLE stepsCount(
    id INTEGER PRIMARY KEY CHECK(id = 0),
    value INTEGER NOT NULL
) STRICT;
INSERT INTO stepsCount(id, value) SELECT 0, count(*) FROM steps;

CREATE TRIGGER stepsInserted AFTER INSERT ON steps BEGIN
    UPDATE stepsCount SET value = value + 1 WHERE id = 0;
END;
CREATE TRIGGER stepsDeleted AFTER DELETE ON steps BEGIN
    UPDATE stepsCount SET value = value - 1 WHERE id = 0;
END;

-- It was there to count by.
DROP INDEX stepsByLastCached;
