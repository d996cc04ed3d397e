// What surrounds the examples in the engine's headers: the names that they use without declaring
// them (see examples.awk). Everything is declared and nothing defined; examples are compiled, never
// run. The generated code includes the headers themselves before this one.
#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <vector>

namespace examples {

struct engine {
    template <typename... Values>
    void use(const Values&...);
    template <typename... Values>
    void report(const Values&...);
    template <typename... Values>
    void print(const Values&...);
    template <typename... Values>
    void show(const Values&...);

    std::filesystem::path path;
    std::shared_ptr<jet::Database> database;
    std::shared_ptr<const jet::Table> table;
    const jet::Record& record;
    const jet::Column& column;
    jet::StoredField field;
    std::u16string text;
};

struct engine_jet : engine {
    const jet::TableDefinition& definition;
    const jet::PhysicalIndex& physicalIndex;
    jet::Storage& storage;
    jet::Pager& pager;
    jet::PageReader& pages;
    jet::PageNumber number;
    jet::Bytes bytes;
    jet::Bytes page;
    std::vector<std::uint8_t> buffer;
    jet::Key key;
    jet::RowId row;
};

struct engine_jet_collation_h : engine_jet {
    std::map<std::string, std::shared_ptr<const jet::Table>> names;
};

struct engine_jet_index_key_h : engine_jet {
    jet::IndexCursor cursor;
};

struct engine_jet_pager_h : engine_jet {
    jet::PageNumber page;
};

struct engine_jet_check : engine_jet {
    jet::checking::Context& context;
    const jet::checking::LiveRows& rows;
    const jet::PhysicalIndex& index;
    std::string name;
    std::size_t place;
    jet::PageNumber leaf;
    jet::PageNumber first;
    jet::PageNumber number;
};

struct engine_jet_check_index_tree_h : engine_jet_check {
    std::size_t number;
    jet::checking::EntryCheck& entries;
};

struct engine_jet_check_ownership_h : engine_jet_check {
    std::uint32_t pageCount;
    jet::PageNumber page;
    jet::PageNumber table;
};

struct engine_jet_check_pages_h : engine_jet_check {
    jet::PageReader& pages;
    jet::PageNumber table;
};

struct engine_jet_check_report_h : engine_jet_check {
    jet::checking::Reporter& reporter;
};

struct engine_jet_check_rows_h : engine_jet_check {
    std::vector<jet::PageNumber> pages;
};

struct engine_jet_write : engine_jet {
    jet::WriteContext& context;
    jet::PageAllocator& allocator;
    jet::PageNumber page;
    jet::PageNumber owner;
    const jet::PhysicalIndex& index;
    std::vector<jet::Value> values;
    jet::Date now;
};

struct engine_jet_write_data_page_edit_h : engine_jet_write {
    jet::PageEdit page;
    jet::Bytes longerRecord;
};

struct engine_jet_write_definition_blocks_h : engine_jet_write {
    jet::DefinitionEditor& definition;
};

struct engine_jet_write_definition_editor_h : engine_jet_write {
    jet::DefinitionEditor::Block descriptor;
    std::u16string name;
};

struct engine_jet_write_index_builder_h : engine_jet_write {
    jet::PageNumber root;
    jet::UsageMapWriter& map;
};

struct engine_jet_write_index_node_h : engine_jet_write {
    std::size_t at;
    jet::Key entry;
};

struct engine_jet_write_long_value_writer_h : engine_jet_write {
    jet::Bytes content;
    jet::Binary field;
};

struct engine_jet_write_record_encoder_h : engine_jet_write {
    std::vector<jet::StoredField> fields;
    std::vector<std::uint8_t> bytes;
};

struct engine_jet_write_row_keys_h : engine_jet_write {
    std::vector<jet::StoredField> fields;
    jet::IndexWriter& writer;
};

struct engine_sql : engine {
    sql::Row row;
    jet::PageReader& pages;
    const sql::SelectStatement& select;
    sql::ExpressionPtr condition;
    sql::ExpressionPtr expression;
    sql::TokenStream tokens;
    std::vector<jet::Value> values;
    jet::Value left;
    jet::Value right;
    jet::Bytes bytes;
    sql::ByteMap map;
    jet::Date date;
    std::size_t place;
};

struct engine_sql_bind_aggregate_h : engine_sql {
    const sql::Aggregate& aggregate;
};

struct engine_sql_run_byte_map_h : engine_sql {
    std::uint32_t decide(jet::Bytes bytes);
};

struct engine_sql_run_change_h : engine_sql {
    const sql::UpdateStatement& update;
};

struct engine_sql_run_cursors_h : engine_sql {
    std::shared_ptr<const sql::Plan> plan;
};

struct engine_ado : engine {
    std::u16string statement;
    std::shared_ptr<sql::Query> query;
    ado::Connection& connection;
    ado::Recordset& recordset;
    std::shared_ptr<ado::HandPump> pump;
    std::shared_ptr<ado::Scheduler> scheduler;
    std::shared_ptr<ado::ScannedRows> rows;
    jet::TableScan scan;
    ado::RowStore& store;
    ado::RowOrder order;
    jet::Value value;
    jet::RowId rowId;
    std::uint32_t row;
    std::uint32_t count;
    std::int64_t position;
    std::size_t i;
    bool done;
    std::atomic<bool> stop;
};

struct engine_ado_dictionary_h : engine_ado {
    std::uint64_t rows;
    std::uint64_t seen;
};

struct engine_ado_error_h : engine_ado {
    void upgrade();
};

struct engine_ado_fetch_h : engine_ado {
    std::function<void(std::uint32_t)> show;
    std::function<void()> sort;
};

struct engine_ado_order_keys_h : engine_ado {
    std::vector<jet::Value> values;
};

struct engine_ado_packed_column_h : engine_ado {
    std::vector<std::int64_t> values;
    std::vector<std::uint8_t> nulls;
    std::uint8_t* buffer;
};

struct engine_ado_radix_sort_h : engine_ado {
    std::vector<std::uint64_t> keys;
    std::vector<std::uint32_t> rows;
};

}  // namespace examples
