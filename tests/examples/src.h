// What surrounds the examples in the viewer's headers: the names that they use without declaring
// them (see examples.awk). Everything is declared and nothing defined; examples are compiled, never
// run. The generated code includes the headers themselves before this one.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace examples {

struct src {
    template <typename... Values>
    void use(const Values&...);

    HWND hwnd() const;
    std::u16string text;
    std::u16string path;
    ado::Recordset& recordset;
    grid::Grid& tdbgridData;
    std::function<void(const std::u16string&)> setNotice;
};

struct src_app : src {
    frmMain& form;
};

struct src_app_instance_h : src {
    void end();
};

struct src_db_class_adors_h : src {
    std::shared_ptr<ado::Scheduler> scheduler;
    std::u16string query;
    ado::Connection& connection;
};

struct src_db_class_diags_h : src {
    std::shared_ptr<ado::Scheduler> scheduler;
    LoadingEvents& mainWindow;
};

struct src_db_loading_events_h : src {
    LoadingEvents& events;
};

struct src_i18n_mod_localize_h : src {
    forms::Button& cmdApplyFilter;
    std::u16string wanted;
};

struct src_ui_filter_unique_traces_tree_h : src {
    forms::TreeView& tvUniqueTraces;
};

struct src_ui_status_frm_status_h : forms::Form {
    frmStatus& status;
    void sort();
};

struct src_ui_about_frm_about_h : src {
    void layOut();
};

struct src_log : src {
    std::u16string kLabel;
};

struct src_log_log_format_h : src_log {
    LocalSeconds now;
};

struct src_log_log_system_h {
    struct Fake {
        LogSystem system();
    };
    Fake fake;
};

struct src_log_procedure_h : src_log {
    ado::Connection& connection();
};

struct src_macros_c_tooltip_h : forms::Form {
    forms::TreeView treeviewMacroTrace;
};

struct src_macros_frm_macro_traces_h : src {
    forms::TreeView& tvUniqueTraces;
};

struct src_macros_harmless_xml_h : src {
    xml::Document scratch;
};

struct src_macros_macro_level_h : src {
    std::u16string qrxIndex;
    void tick();
};

struct src_platform_running_on_server_h {
    DWORD kPauseOnServer;
    DWORD kPause;
};

struct src_platform_system_error_h : src {
    std::wstring folder;
};

struct src_search_ansi_file_h : src {
    std::wstring path;
};

struct src_search_export_h : src {
    ado::Recordset& view;
    AnsiFile& file;
    void showProgress(std::int64_t position);
};

struct src_search_find_history_h : src {
    FindHistory history;
    forms::ComboBox comboFindWhat;
};

struct src_search_hourglass_h : forms::Form {};

struct src_services_services_h {
    RegistryAPI::WindowsRegistry fakeRegistry;
};

struct src_ui_main_grid_arrangement_h : src {
    grid::DataSource& other;
};

}  // namespace examples
