CREATE TABLE info (
  key TEXT NOT NULL PRIMARY KEY,
  value TEXT NOT NULL
) STRICT;
CREATE TABLE entity (
  id INTEGER PRIMARY KEY,
  uid TEXT NOT NULL UNIQUE,
  definition TEXT NOT NULL,
  name TEXT NOT NULL,
  published INTEGER,
  working INTEGER,
  lock_user TEXT,
  lock_workspace TEXT,
  lock_time INTEGER,
  created_time INTEGER NOT NULL,
  created_user TEXT NOT NULL,
  created_workspace TEXT NOT NULL,
  deleted INTEGER NOT NULL DEFAULT 0,
  branch_uid TEXT,
  branch_revision INTEGER,
  vault TEXT, name_folded TEXT,
  CHECK (published IS NOT NULL OR working IS NOT NULL),
  CHECK ((working IS NULL) = (lock_user IS NULL)),
  CHECK ((working IS NULL) = (lock_workspace IS NULL)),
  CHECK ((branch_uid IS NULL) = (branch_revision IS NULL))
) STRICT;
CREATE INDEX entity_definition ON entity(definition);
CREATE INDEX entity_name ON entity(name);
CREATE INDEX entity_lock ON entity(lock_user, lock_workspace) WHERE working IS NOT NULL;
CREATE INDEX entity_branch ON entity(branch_uid) WHERE branch_uid IS NOT NULL;
CREATE INDEX entity_deleted ON entity(deleted) WHERE deleted <> 0;
CREATE TABLE revision (
  id INTEGER PRIMARY KEY,
  state INTEGER NOT NULL CHECK (state IN (0, 1, 2)),
  display_name TEXT NOT NULL,
  created_time INTEGER NOT NULL,
  created_user TEXT NOT NULL,
  modified_time INTEGER NOT NULL,
  modified_user TEXT NOT NULL,
  published_time INTEGER,
  published_user TEXT,
  workspace TEXT NOT NULL,
  comment TEXT NOT NULL DEFAULT '',
  attributes BLOB NOT NULL
) STRICT;
CREATE TABLE savepoint (
  revision INTEGER NOT NULL REFERENCES revision(id) ON UPDATE CASCADE ON DELETE CASCADE,
  sequence INTEGER NOT NULL,
  time INTEGER NOT NULL,
  user TEXT NOT NULL,
  comment TEXT NOT NULL,
  PRIMARY KEY (revision, sequence)
) STRICT, WITHOUT ROWID;
CREATE TABLE head_attribute (
  entity INTEGER NOT NULL,
  name TEXT NOT NULL,
  working INTEGER NOT NULL,
  value ANY, folded TEXT,
  PRIMARY KEY (entity, name, working)
) STRICT, WITHOUT ROWID;
CREATE INDEX head_attribute_value ON head_attribute(name, value);
CREATE TABLE link (
  first INTEGER NOT NULL REFERENCES entity(id),
  kind INTEGER NOT NULL CHECK (kind BETWEEN 1 AND 5),
  to_rev INTEGER NOT NULL DEFAULT 2147483647,
  name TEXT NOT NULL,
  position INTEGER NOT NULL,
  second INTEGER NOT NULL REFERENCES entity(id),
  from_rev INTEGER NOT NULL,
  ending INTEGER,
  exact INTEGER,
  composition INTEGER NOT NULL DEFAULT 0,
  entry TEXT,
  CHECK (from_rev < to_rev),
  CHECK (ending IS NULL OR (ending > from_rev AND to_rev = 2147483647)),
  PRIMARY KEY (first, kind, to_rev, name, position, second, from_rev)
) STRICT, WITHOUT ROWID;
CREATE INDEX link_second ON link(second, kind, to_rev, first, name, ending);
CREATE INDEX link_entry ON link(second, entry) WHERE entry IS NOT NULL;
CREATE INDEX link_ending ON link(first) WHERE ending IS NOT NULL;
CREATE TABLE file (
  entity INTEGER NOT NULL REFERENCES entity(id),
  to_rev INTEGER NOT NULL DEFAULT 2147483647,
  name TEXT NOT NULL,
  from_rev INTEGER NOT NULL,
  ending INTEGER,
  hash TEXT,
  size INTEGER NOT NULL,
  modified_time INTEGER NOT NULL,
  added_time INTEGER NOT NULL,
  is_text INTEGER NOT NULL,
  external_path TEXT,
  vault TEXT, text INTEGER,
  CHECK (from_rev < to_rev),
  CHECK ((hash IS NULL) = (external_path IS NOT NULL)),
  PRIMARY KEY (entity, to_rev, name, from_rev)
) STRICT, WITHOUT ROWID;
CREATE INDEX file_hash ON file(hash) WHERE hash IS NOT NULL;
CREATE TABLE journal (
  sequence INTEGER PRIMARY KEY,
  time INTEGER NOT NULL,
  op INTEGER NOT NULL,
  entity INTEGER NOT NULL,
  revision INTEGER NOT NULL,
  parent INTEGER NOT NULL,
  child INTEGER NOT NULL,
  session TEXT NOT NULL,
  process INTEGER NOT NULL,
  user TEXT NOT NULL,
  workspace TEXT NOT NULL
) STRICT;
CREATE INDEX entity_name_folded ON entity(name_folded) WHERE name_folded IS NOT NULL;
CREATE INDEX head_attribute_folded ON head_attribute(name, folded) WHERE folded IS NOT NULL;
CREATE VIRTUAL TABLE text_attribute USING fts5(words, tokenize='kxudm', columnsize=0);
CREATE VIRTUAL TABLE text_content USING fts5(words, content='', tokenize='kxudm', columnsize=0);
CREATE TABLE text_pending (entity INTEGER PRIMARY KEY) STRICT;
CREATE TRIGGER text_revision_added AFTER INSERT ON revision BEGIN
  INSERT OR IGNORE INTO text_pending(entity) VALUES (new.id >> 24);
END;
CREATE TRIGGER text_revision_changed AFTER UPDATE OF id, display_name, attributes ON revision BEGIN
  INSERT OR IGNORE INTO text_pending(entity) VALUES (new.id >> 24);
END;
CREATE TRIGGER text_revision_removed AFTER DELETE ON revision BEGIN
  INSERT OR IGNORE INTO text_pending(entity) VALUES (old.id >> 24);
END;
CREATE TRIGGER text_name_changed AFTER UPDATE OF name ON entity BEGIN
  INSERT OR IGNORE INTO text_pending(entity) VALUES (new.id);
END;
CREATE INDEX file_text ON file(text) WHERE text > 0;
CREATE INDEX file_text_pending ON file(hash, vault) WHERE text IS NULL AND hash IS NOT NULL;
CREATE INDEX link_new ON link(first, from_rev) WHERE from_rev NOT IN (0, 1);
