// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/ServerFunctions.h"

#include <algorithm>
#include <array>

#include "util/Text.h"

namespace velmora {

namespace {

constexpr int kNever = 0;
constexpr int kAlways = 1;

struct TFunctionRow {
  std::string_view name;
  int mysql;            // the first version that has it
  int mariadb;          // likewise
  int mysql_until = 0;  // the first that has it no longer; 0 for none
};

// Asked of MySQL 9.7.4 and MariaDB 10.5.23, 10.11.19 and 11.8.6 one by one; since when is in their manuals: MySQL 8.4
// Reference Manual, 14.1 Built-In Function and Operator Reference; 8.0, 1.4 What Is New; MariaDB Documentation,
// "Built-in Functions".
constexpr std::array<TFunctionRow, 115> kFunctions = {{{"add_months", kNever, 100601},
                                                       {"any_value", 50705, kNever},
                                                       {"area", kAlways, kAlways, 80000},
                                                       {"asbinary", kAlways, kAlways, 80000},
                                                       {"astext", kAlways, kAlways, 80000},
                                                       {"bin_to_uuid", 80000, kNever},
                                                       {"binlog_gtid_pos", kNever, 100002},
                                                       {"chr", kNever, 100301},
                                                       {"column_add", kNever, 50300},
                                                       {"column_check", kNever, 100001},
                                                       {"column_create", kNever, 50300},
                                                       {"column_delete", kNever, 50300},
                                                       {"column_exists", kNever, 50300},
                                                       {"column_get", kNever, 50300},
                                                       {"column_json", kNever, 100001},
                                                       {"column_list", kNever, 50300},
                                                       {"crc32c", kNever, 100800},
                                                       {"decode", kAlways, kAlways, 80003},
                                                       {"decode_histogram", kNever, 100002},
                                                       {"decode_oracle", kNever, 100302},
                                                       {"des_decrypt", kAlways, kAlways, 80003},
                                                       {"des_encrypt", kAlways, kAlways, 80003},
                                                       {"dimension", kAlways, kAlways, 80000},
                                                       {"encode", kAlways, kAlways, 80003},
                                                       {"encrypt", kAlways, kAlways, 80003},
                                                       {"envelope", kAlways, kAlways, 80000},
                                                       {"format_bytes", 80016, 110800},
                                                       {"format_pico_time", 80016, 110000},
                                                       {"from_vector", 90000, kNever},
                                                       {"geometryn", kAlways, kAlways, 80000},
                                                       {"geomfromtext", kAlways, kAlways, 80000},
                                                       {"glength", kAlways, kAlways, 80000},
                                                       {"grouping", 80001, kNever},
                                                       {"gtid_subset", 50605, kNever},
                                                       {"gtid_subtract", 50605, kNever},
                                                       {"icu_version", 80004, kNever},
                                                       {"is_uuid", 80000, kNever},
                                                       {"isempty", kAlways, kAlways, 80000},
                                                       {"issimple", kAlways, kAlways, 80000},
                                                       {"json_array_intersect", kNever, 110200},
                                                       {"json_compact", kNever, 100204},
                                                       {"json_detailed", kNever, 100204},
                                                       {"json_equals", kNever, 100700},
                                                       {"json_exists", kNever, 100203},
                                                       {"json_key_value", kNever, 110200},
                                                       {"json_loose", kNever, 100204},
                                                       {"json_normalize", kNever, 100700},
                                                       {"json_object_filter_keys", kNever, 110200},
                                                       {"json_object_to_array", kNever, 110200},
                                                       {"json_overlaps", 80017, 100900},
                                                       {"json_query", kNever, 100203},
                                                       {"json_schema_valid", 80017, 110100},
                                                       {"json_schema_validation_report", 80017, kNever},
                                                       {"json_storage_free", 80013, kNever},
                                                       {"json_storage_size", 50722, kNever},
                                                       {"json_table", 80004, 100600},
                                                       {"json_value", 80021, 100203},
                                                       {"kdf", kNever, 110300},
                                                       {"lastval", kNever, 100300},
                                                       {"lengthb", kNever, 100301},
                                                       {"master_gtid_wait", kNever, 100009},
                                                       {"mbrcoveredby", 50706, 120000},
                                                       {"mbrcovers", 50706, 120000},
                                                       {"mbrequal", kAlways, kAlways, 80000},
                                                       {"median", kNever, 100303},
                                                       {"natural_sort_key", kNever, 100700},
                                                       {"nextval", kNever, 100300},
                                                       {"numpoints", kAlways, kAlways, 80000},
                                                       {"nvl", kNever, 100300},
                                                       {"nvl2", kNever, 100300},
                                                       {"old_password", kAlways, kAlways, 50705},
                                                       {"password", kAlways, kAlways, 80011},
                                                       {"percentile_cont", kNever, 100303},
                                                       {"percentile_disc", kNever, 100303},
                                                       {"pointonsurface", kNever, kAlways},
                                                       {"ps_current_thread_id", 80016, kNever},
                                                       {"ps_thread_id", 80016, kNever},
                                                       {"random_bytes", 50617, 101000},
                                                       {"regexp_like", 80004, kNever},
                                                       {"roles_graphml", 80000, kNever},
                                                       {"setval", kNever, 100300},
                                                       {"sformat", kNever, 100700},
                                                       {"source_pos_wait", 80026, kNever},
                                                       {"st_collect", 80024, 120000},
                                                       {"st_frechetdistance", 80023, kNever},
                                                       {"st_geohash", 50705, 120000},
                                                       {"st_hausdorffdistance", 80023, kNever},
                                                       {"st_isvalid", 50706, 120000},
                                                       {"st_latfromgeohash", 50705, 120000},
                                                       {"st_latitude", 80012, kNever},
                                                       {"st_longfromgeohash", 50705, 120000},
                                                       {"st_longitude", 80012, kNever},
                                                       {"st_makeenvelope", 50706, kNever},
                                                       {"st_pointfromgeohash", 50705, 120000},
                                                       {"st_simplify", 50706, 120000},
                                                       {"st_swapxy", 80000, kNever},
                                                       {"st_transform", 80013, kNever},
                                                       {"st_validate", 50706, 120000},
                                                       {"statement_digest", 80004, kNever},
                                                       {"statement_digest_text", 80004, kNever},
                                                       {"string_to_vector", 90000, kNever},
                                                       {"sys_guid", kNever, 100601},
                                                       {"to_char", kNever, 100601},
                                                       {"to_vector", 90000, kNever},
                                                       {"uuid_to_bin", 80000, kNever},
                                                       {"uuid_v4", kNever, 110700},
                                                       {"uuid_v7", kNever, 110700},
                                                       {"vec_distance", kNever, 110701},
                                                       {"vec_distance_cosine", kNever, 110701},
                                                       {"vec_distance_euclidean", kNever, 110701},
                                                       {"vec_fromtext", kNever, 110701},
                                                       {"vec_totext", kNever, 110701},
                                                       {"vector_to_string", 90000, kNever},
                                                       {"vector_dim", 90000, kNever},
                                                       {"wait_for_executed_gtid_set", 50705, kNever}}};

}  // namespace

EFunctionOn FunctionOn(const TServerTraits& server, std::string_view name) {
  const std::string lower = LowerText(name);
  const auto row = std::ranges::find(kFunctions, lower, &TFunctionRow::name);
  if (row == kFunctions.end()) return EFunctionOn::Everywhere;
  const int since = server.mysql ? row->mysql : row->mariadb;
  const bool gone =
      server.mysql && row->mysql_until != 0 && (server.version == 0 || server.version >= row->mysql_until);
  const bool has = since != kNever && !gone && (server.version == 0 || server.version >= since);
  return has ? EFunctionOn::Here : EFunctionOn::Elsewhere;
}

}  // namespace velmora
