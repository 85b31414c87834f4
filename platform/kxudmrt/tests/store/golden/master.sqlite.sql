CREATE TABLE library (
  id INTEGER PRIMARY KEY,
  name TEXT NOT NULL UNIQUE,
  profile_name TEXT NOT NULL,
  data_source TEXT NOT NULL,
  ldb_file TEXT NOT NULL,
  base_directory TEXT NOT NULL,
  is_default INTEGER NOT NULL DEFAULT 0 CHECK (is_default IN (0, 1)),
  db_host TEXT NOT NULL,
  db_port TEXT NOT NULL,
  client_settings BLOB NOT NULL DEFAULT x''
) STRICT;
CREATE UNIQUE INDEX library_default ON library(is_default) WHERE is_default = 1;
CREATE TABLE workspace (
  user TEXT NOT NULL,
  name TEXT NOT NULL,
  working_directory TEXT NOT NULL,
  client_working_directory TEXT NOT NULL,
  host_name TEXT NOT NULL,
  user_display_name TEXT NOT NULL,
  is_default INTEGER NOT NULL DEFAULT 0 CHECK (is_default IN (0, 1)),
  PRIMARY KEY (user, name)
) STRICT, WITHOUT ROWID;
CREATE UNIQUE INDEX workspace_default ON workspace(user) WHERE is_default = 1;
