#include <array>

#include "store/schema/Schema.h"

namespace kxudm::store {
namespace {

// Invariants that the DDL alone can't say:
// - A revision's id is entity * 2^24 + number: one descent finds it, a range lists an entity's.
// - An unversioned entity has published 0, no working revision, and one revision of state 2.
// - head_attribute holds for each entity the attributes of its newest published (or unversioned)
//   revision with working 0, and over them, with working 1, those in which the working revision
//   differs (all of them before the first publish; NULL masks a value). "displayname" is among
//   them. Attributes that its definition does not have any more are not, and one that came into it
//   later stands with its default as long as the revision never had a value of it.
// - A link holds for the revisions from_rev <= r < to_rev of the end that bears it: `first`, which
// is
//   the parent for kinds 1, 2 and 5, the child for 3 and 4. to_rev 2147483647 is open. A link
//   removed in a working revision stays open with `ending` set to it, until its publish closes it
//   and its undo clears `ending`: so the newest revision of anybody needs the open links only.
// - An exact relation has `ending` behind its one revision of `first` from the start; it is closed
//   by the publish of the next revision.
// - `entry` repeats the child's name in links of kind 3, for the look-up of folder paths.
// - from_rev 0 stays as it is when revision 0 is published as 1.
// - A journal entry with a negative op is told to everybody but its user in its workspace.
// - `deleted` is 0, the number of the deletion that hid the entity, or -1: nothing of it has come
//   yet but links to it, of kinds 1, 2 and 5. Its row has the UID alone, no definition and no
//   revision, and makes room when the entity comes.
// - text_attribute and text_content are indexes of prepared texts (text/Terms.h). Row 2 * entity of
//   text_attribute has the words of the published (or unversioned) revision, the row behind it
//   those of the working one; entities of which that may be out of date stand in text_pending. A
//   file's `text` is the row of text_content with its words, 0 for none, -1 where the content could
//   not be read, NULL where nobody has looked yet.
constexpr const char* STEP_1 = R"sql(
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
  vault TEXT,
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
  value ANY,
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
  vault TEXT,
  CHECK (from_rev < to_rev),
  CHECK ((hash IS NULL) = (external_path IS NOT NULL)),
  PRIMARY KEY (entity, to_rev, name, from_rev)
) STRICT, WITHOUT ROWID;
CREATE INDEX file_hash ON file(hash) WHERE hash IS NOT NULL;

CREATE TABLE workspace_state (
  user TEXT NOT NULL,
  workspace TEXT NOT NULL,
  entity INTEGER NOT NULL REFERENCES entity(id),
  revision INTEGER NOT NULL,
  time INTEGER NOT NULL,
  PRIMARY KEY (user, workspace, entity)
) STRICT, WITHOUT ROWID;
CREATE INDEX workspace_state_entity ON workspace_state(entity);

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
)sql";

// For queries that ignore case and accents. Folded texts (sql/Fold.h) are kept where they differ
// from the text itself: most numbers, codes and dates need none.
constexpr const char* STEP_2 = R"sql(
ALTER TABLE entity ADD COLUMN name_folded TEXT;
ALTER TABLE head_attribute ADD COLUMN folded TEXT;
UPDATE entity SET name_folded = kxudm_fold(name) WHERE kxudm_fold(name) <> name;
UPDATE head_attribute SET folded = kxudm_fold(value) WHERE kxudm_fold(value) <> value;
CREATE INDEX entity_name_folded ON entity(name_folded) WHERE name_folded IS NOT NULL;
CREATE INDEX head_attribute_folded ON head_attribute(name, folded) WHERE folded IS NOT NULL;
)sql";

// Nothing ever wrote it.
constexpr const char* STEP_3 = "DROP TABLE workspace_state;";

// Full text search. What is there already waits to be indexed, like what comes later. Words come
// in by the thousand and are searched by the few: many are collected before they are written.
constexpr const char* STEP_4 = R"sql(
CREATE VIRTUAL TABLE text_attribute USING fts5(words, tokenize='kxudm', columnsize=0);
CREATE VIRTUAL TABLE text_content USING fts5(words, content='', tokenize='kxudm', columnsize=0);
INSERT INTO text_attribute(text_attribute, rank) VALUES ('automerge', 8), ('hashsize', 16777216);
INSERT INTO text_content(text_content, rank) VALUES ('automerge', 8), ('hashsize', 33554432);
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
ALTER TABLE file ADD COLUMN text INTEGER;
CREATE INDEX file_text ON file(text) WHERE text > 0;
CREATE INDEX file_text_pending ON file(hash, vault) WHERE text IS NULL AND hash IS NOT NULL;
INSERT INTO text_pending SELECT id FROM entity;
)sql";

// What a working revision added to its links, for the undo of a check-out: found without a walk
// through all the others. Nothing is undone before the first publish, so that most links don't
// stand in it. A condition of the form "from_rev > 1" would be taken for a range.
constexpr const char* STEP_5 =
    "CREATE INDEX link_new ON link(first, from_rev) WHERE from_rev NOT IN (0, 1);";

constexpr std::array STEPS{SchemaStep{1, STEP_1},
                           SchemaStep{2, STEP_2},
                           SchemaStep{3, STEP_3},
                           SchemaStep{4, STEP_4},
                           SchemaStep{5, STEP_5}};

}  // namespace

std::span<const SchemaStep> LibrarySchema() {
    return STEPS;
}

}  // namespace kxudm::store
