// All SQL of the master database, by name.
//
// Layer: store.
#ifndef KXUDMRT_STORE_MASTERSTATEMENTS_H
#define KXUDMRT_STORE_MASTERSTATEMENTS_H

#include "sql/Connection.h"

#define KXUDM_LIBRARY                                                                   \
    "SELECT id, name, profile_name, data_source, ldb_file, base_directory, is_default," \
    " db_host, db_port FROM library"
#define KXUDM_WORKSPACE                                                          \
    "SELECT user, name, working_directory, client_working_directory, host_name," \
    " user_display_name, is_default FROM workspace"

namespace kxudm::store::statements {

using sql::NamedStatement;

inline constexpr NamedStatement LIBRARIES{
    "libraries", KXUDM_LIBRARY " WHERE ?1 = '' OR data_source = ?1 ORDER BY name"};
inline constexpr NamedStatement LIBRARY_BY_NAME{"library by name",
                                                KXUDM_LIBRARY " WHERE name = ?1"};
inline constexpr NamedStatement LIBRARY_BY_ID{"library by id", KXUDM_LIBRARY " WHERE id = ?1"};
// The first one is the default.
inline constexpr NamedStatement INSERT_LIBRARY{
    "insert library",
    "INSERT INTO library(name, profile_name, data_source, ldb_file, base_directory, db_host,"
    " db_port, is_default) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7,"
    " NOT EXISTS (SELECT 1 FROM library))"};
inline constexpr NamedStatement UPDATE_LIBRARY{
    "update library",
    "UPDATE library SET name = ?1, profile_name = ?2, data_source = ?3, ldb_file = ?4,"
    " base_directory = ?5, db_host = ?6, db_port = ?7 WHERE id = ?8"};
inline constexpr NamedStatement NO_DEFAULT_LIBRARY{
    "no default library", "UPDATE library SET is_default = 0 WHERE is_default = 1"};
inline constexpr NamedStatement DEFAULT_LIBRARY{"default library",
                                                "UPDATE library SET is_default = 1 WHERE id = ?1"};
inline constexpr NamedStatement DELETE_LIBRARY{"delete library",
                                               "DELETE FROM library WHERE id = ?1"};
inline constexpr NamedStatement CLIENT_SETTINGS{
    "client settings", "SELECT client_settings FROM library WHERE id = ?1"};
inline constexpr NamedStatement SET_CLIENT_SETTINGS{
    "set client settings", "UPDATE library SET client_settings = ?2 WHERE id = ?1"};

inline constexpr NamedStatement WORKSPACES{"workspaces",
                                           KXUDM_WORKSPACE " WHERE user = ?1 ORDER BY name"};
inline constexpr NamedStatement WORKSPACE{"workspace",
                                          KXUDM_WORKSPACE " WHERE user = ?1 AND name = ?2"};
inline constexpr NamedStatement INSERT_WORKSPACE{
    "insert workspace",
    "INSERT INTO workspace(user, name, working_directory, client_working_directory, host_name,"
    " user_display_name, is_default) VALUES (?1, ?2, ?3, ?4, ?5, ?6,"
    " NOT EXISTS (SELECT 1 FROM workspace WHERE user = ?1)) ON CONFLICT(user, name) DO NOTHING"};
inline constexpr NamedStatement UPDATE_WORKSPACE{
    "update workspace",
    "UPDATE workspace SET working_directory = ?3, client_working_directory = ?4, host_name = ?5,"
    " user_display_name = ?6 WHERE user = ?1 AND name = ?2"};
inline constexpr NamedStatement NO_DEFAULT_WORKSPACE{
    "no default workspace",
    "UPDATE workspace SET is_default = 0 WHERE user = ?1 AND is_default = 1"};
inline constexpr NamedStatement DEFAULT_WORKSPACE{
    "default workspace", "UPDATE workspace SET is_default = 1 WHERE user = ?1 AND name = ?2"};
inline constexpr NamedStatement DELETE_WORKSPACE{
    "delete workspace", "DELETE FROM workspace WHERE user = ?1 AND name = ?2"};

}  // namespace kxudm::store::statements

#endif
