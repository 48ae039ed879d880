#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "data/sqlite/sql_type.h"

namespace pxscheduler {

struct SqlQuery;

enum class SqlNodeKind {
  kNumber,  // `text`
  kString,  // `text`
  kNull,
  kColumn,      // `names`: the column, in front of it the table and its owners
  kStar,        // `names`: the table and its owners, or nothing
  kNegative,    // the operand
  kOperation,   // `text`: + - * / % & | ^, and both operands
  kComparison,  // `text`: = <> < <= > >=, and both operands
  kQuantified,  // the same with ALL (`is_negated`) or ANY of `query`
  kAnd,
  kOr,
  kNot,
  kBetween,  // operand, lower and upper bound
  kInList,   // operand and values
  kInQuery,  // operand, `query`
  kExists,   // `query`
  kLike,     // text, pattern, escape character or nothing
  kIsNull,
  kCase,    // `has_operand`: operand first; then pairs of a condition and a result; `has_else`: the
            // rest
  kCast,    // operand, style or nothing; `type`
  kCall,    // `text`: the function in upper case; `has_distinct`, `has_star`; the arguments
  kWindow,  // `text`: the function; `partition_count` expressions, then `order`
  kSubquery,  // `query`
  kCollate,   // operand, `text`
};

// An expression or a condition.
struct SqlNode {
  SqlNodeKind kind = SqlNodeKind::kNull;
  std::size_t place = 0;  // in the text, 0-based
  std::string text;
  std::vector<std::string> names;
  std::vector<SqlNode> operands;
  std::shared_ptr<const SqlQuery> query;
  SqlType type;
  bool is_negated = false;  // NOT LIKE and its kind
  bool has_operand = false;
  bool has_else = false;
  bool has_distinct = false;
  bool has_star = false;
  std::size_t partition_count = 0;
  std::vector<bool> descending;  // of the operands behind the partition
};

struct SqlSelectItem {
  SqlNode node;
  std::string alias;  // "" where it has none
};

// A table, a derived table or a join.
struct SqlSource {
  std::size_t place = 0;
  std::vector<std::string> names;  // of a table
  std::shared_ptr<const SqlQuery> query;
  std::string alias;
  std::vector<std::string> column_aliases;
  std::string join;  // as SQLite writes it: "LEFT JOIN"; "" for no join
  std::vector<SqlSource> sides;
  std::vector<SqlNode> condition;  // one at most
};

struct SqlOrder {
  SqlNode node;
  bool is_descending = false;
};

struct SqlSelect {
  bool is_distinct = false;
  std::vector<SqlNode> top;  // one at most
  std::vector<SqlSelectItem> items;
  std::vector<SqlSource> sources;
  std::vector<SqlNode> where;  // one at most
  std::vector<SqlNode> groups;
  std::vector<SqlNode> having;  // one at most
};

struct SqlCommonTable {
  std::string name;
  std::vector<std::string> column_aliases;
  std::shared_ptr<const SqlQuery> query;
};

// Members joined by set operators, from left to right.
struct SqlQuery {
  std::vector<SqlCommonTable> common_tables;
  std::vector<SqlSelect> members;
  std::vector<std::string> operators;  // "UNION ALL": one less than the members
  std::vector<SqlOrder> order;
};

}  // namespace pxscheduler
