// Statements as parsed, before their names are looked up.
//
//   sql::Statement statement = sql::parseStatement(u"SELECT Name FROM People WHERE Age > 30");
//   auto& select = std::get<sql::SelectStatement>(statement);
//
// Plain values; any thread may use them.
#pragma once

#include "engine/jet/value.h"
#include "engine/jet/write/schema.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace sql {

enum class NodeKind {
    Literal,   ///< value
    Column,    ///< [qualifier.]name
    Star,      ///< the * of COUNT(*)
    Negative,  ///< - operand
    Chain,     ///< operators of one level between operands, applied from the left
    And,       ///< two or more operands
    Or,        ///< two or more operands
    Not,       ///< NOT operand
    In,        ///< operand [NOT] IN (the others)
    Between,   ///< operand [NOT] BETWEEN second AND third
    Like,      ///< operand [NOT] LIKE second
    IsNull,    ///< operand IS [NOT] NULL
    Call,      ///< name(operands)
};

enum class Operator {
    Equal,
    Unequal,
    Less,
    Greater,
    LessOrEqual,
    GreaterOrEqual,
    Join,  ///< &
    Add,
    Subtract,
    Multiply,
    Divide,
};

/// The precedence levels; the operators of a Chain all have the same one.
enum class ChainLevel { Comparison, Join, Additive, Multiplicative };

ChainLevel levelOf(Operator op);

struct Node;
using NodePtr = std::unique_ptr<Node>;

/// An expression. Lists of OR and AND, and chains such as a + b - c, are flat: their length does
/// not add to the depth. The parser limits the depth, so that trees can be walked recursively.
struct Node {
    NodeKind kind = NodeKind::Literal;
    std::size_t position = 0;  ///< in the text of the statement
    jet::Value value;
    std::u16string qualifier;
    std::u16string name;
    std::vector<Operator> operators;  ///< of a Chain: one between two operands
    bool negated = false;
    std::vector<NodePtr> operands;
    unsigned depth = 1;
};

/// Whether two expressions are the same except for case, quotes and qualifiers.
bool sameExpression(const Node& left, const Node& right);

struct SelectItem {
    NodePtr expression;     ///< null for *
    std::u16string starOf;  ///< of table.*: the table; empty for a plain *
    std::u16string alias;   ///< empty if none
    std::size_t position = 0;
};

struct OrderItem {
    NodePtr expression;
    bool ascending = true;
};

struct SelectStatement {
    bool distinct = false;
    std::optional<std::uint64_t> top;
    std::vector<SelectItem> items;
    std::u16string table;
    std::u16string tableAlias;  ///< empty if none
    NodePtr where;              ///< null if none
    std::vector<NodePtr> groupBy;
    std::vector<OrderItem> orderBy;
};

struct ColumnChange {
    std::u16string column;
    NodePtr value;
    std::size_t position = 0;
};

struct UpdateStatement {
    std::u16string table;
    std::u16string tableAlias;  ///< empty if none
    std::vector<ColumnChange> changes;
    NodePtr where;  ///< null: every row
};

struct InsertStatement {
    std::u16string table;
    std::vector<std::u16string> columns;  ///< empty if not named
    std::vector<NodePtr> values;          ///< of VALUES
    std::optional<SelectStatement> rows;  ///< instead of values
};

struct CreateTableStatement {
    std::u16string table;
    std::vector<jet::NewColumn> columns;
    std::vector<jet::NewIndex> indexes;  ///< for the columns' PRIMARY KEY clauses
};

struct AddColumnStatement {
    std::u16string table;
    jet::NewColumn column;
    std::vector<jet::NewIndex> indexes;  ///< for the column's PRIMARY KEY clause
};

struct CreateIndexStatement {
    std::u16string table;
    jet::NewIndex index;
};

struct DropTableStatement {
    std::u16string table;
};

/// One alternative for each kind of statement.
using Statement =
    std::variant<SelectStatement, UpdateStatement, InsertStatement, CreateTableStatement,
                 AddColumnStatement, CreateIndexStatement, DropTableStatement>;

/// Throws Error{Syntax}, naming the place.
Statement parseStatement(std::u16string_view text);

/// One expression by itself. Throws likewise.
NodePtr parseExpression(std::u16string_view text);

}  // namespace sql
