#include "examples/brainstorm/Style.h"
#include "examples/brainstorm/Gtk.h"

#include <string>

namespace ideas {

namespace {

constexpr char const* lightColors = R"(
@define-color ground #fbfbfd; @define-color side #f1f1f6; @define-color card #ffffff; @define-color text #23232e;
@define-color soft #6d6d7c; @define-color faint #a3a3b2; @define-color line #e4e4ec; @define-color accent #6a5ae0;
@define-color accent_text #ffffff; @define-color glow rgba(106, 90, 224, 0.12); @define-color panel rgba(255, 255, 255, 0.985);
@define-color edge rgba(20, 20, 50, 0.16);
)";

constexpr char const* darkColors = R"(
@define-color ground #1f1f28; @define-color side #191921; @define-color card #292934; @define-color text #ededf4;
@define-color soft #a5a5b5; @define-color faint #77778a; @define-color line #34343f; @define-color accent #9184ff;
@define-color accent_text #16161d; @define-color glow rgba(145, 132, 255, 0.18); @define-color panel rgba(34, 34, 44, 0.98);
@define-color edge rgba(255, 255, 255, 0.14);
)";

constexpr char const* rules = R"(
* { font-family: Cantarell, sans-serif; text-shadow: none; -gtk-icon-shadow: none; }
window { background-color: @ground; color: @text; }
label { color: inherit; }
scrolledwindow, viewport, list { background: transparent; }
undershoot, overshoot { background: none; }

button.primary, button.secondary { border: none; box-shadow: none; border-radius: 10px; font-weight: bold; padding: 10px 18px; outline: none; }
button.primary { background: @accent; color: @accent_text; }
button.primary:hover { background: shade(@accent, 1.08); }
button.primary:active { background: shade(@accent, 0.92); }
button.secondary { background: @glow; color: @accent; }
button.secondary:hover { background: alpha(@accent, 0.22); }
button.icon-button { border: none; box-shadow: none; background: transparent; color: @soft; border-radius: 10px; min-width: 36px; min-height: 36px; padding: 0; }
button.icon-button:hover { background: alpha(@text, 0.07); color: @text; }
button.icon-button:checked { background: @accent; color: @accent_text; }

.panel-window { background: transparent; }
.panel { background-color: @panel; border: 1px solid @edge; border-radius: 16px; }
.panel.square { border-radius: 0; }
.strip { min-height: 89px; padding: 0 20px 0 24px; }
entry.thought { background: transparent; border: none; box-shadow: none; outline: none; font-size: 25px; color: @text; caret-color: @accent; padding: 0; min-height: 60px; }
entry.thought selection { background: @accent; color: @accent_text; }
.hint { font-size: 25px; color: @faint; padding-left: 3px; }
.panel .ideas { padding: 14px 0 0 0; }
.panel .idea { padding: 0 20px 0 28px; min-height: 46px; }
.dot { min-width: 10px; min-height: 10px; border-radius: 5px; }
.tint-0 { background: #f98b5c; } .tint-1 { background: #5c99f2; } .tint-2 { background: #52bd91; }
.tint-3 { background: #b57bee; } .tint-4 { background: #eeb64c; }
.attachment { color: @accent; margin: 0 -3px; }
.idea-text { font-size: 16px; }
button.icon-button.delete { min-width: 28px; min-height: 28px; border-radius: 14px; color: alpha(@faint, 0.7); }

.sidebar { background: @side; border-right: 1px solid @line; padding: 16px 12px 12px 12px; }
.sidebar button.primary { margin: 0 0 14px 0; }
.entries row { color: @text; border-radius: 10px; padding: 0; margin: 0 0 3px 0; outline: none; background: transparent; }
.entries row:hover { background: alpha(@text, 0.04); }
.entries row:selected { background: @glow; color: @text; }
.entry-row { padding: 9px 12px; }
.entry-title { font-weight: bold; font-size: 14px; }
.entry-summary { color: @soft; font-size: 12px; }
.placeholder { color: @faint; font-size: 13px; padding: 12px; }
button.sidebar-button { border: none; box-shadow: none; background: transparent; border-radius: 10px; padding: 8px 12px; color: @soft; }
button.sidebar-button:hover { background: alpha(@text, 0.05); color: @text; }
.sidebar-label { font-size: 14px; }

.detail { padding: 28px 34px 8px 34px; }
.overline { color: @faint; font-size: 12px; margin-bottom: 10px; }
.notice { background: alpha(#eeb64c, 0.18); border-radius: 10px; padding: 10px 14px; margin-bottom: 14px; font-size: 13px; }
.headline { font-size: 26px; font-weight: bold; }
.summary { color: @soft; font-size: 14px; }
.cards { padding: 18px 0; }
.cards .idea { background: @card; border: 1px solid @line; border-radius: 12px; padding: 0 18px; min-height: 46px; margin-bottom: 8px; }

.trace { border-top: 1px solid @line; background: @side; }
.trace-header { padding: 10px 16px 2px 16px; }
.trace-title { font-weight: bold; font-size: 12px; color: @soft; }
.trace-status { font-size: 12px; color: @faint; }
textview.activity, textview.activity text { background: transparent; font-family: "DejaVu Sans Mono", monospace; font-size: 11px; }

.settings { padding: 12px 24px 24px 24px; }
.group-title { color: @soft; font-size: 13px; font-weight: bold; margin: 16px 4px 8px 4px; }
.group { background: @card; border: 1px solid @line; border-radius: 14px; }
.row { padding: 12px 16px; border-bottom: 1px solid @line; }
.row:last-child { border-bottom: none; }
.row-title { font-size: 15px; }
.row-explanation { font-size: 12px; color: @soft; }
.row.joined { border-bottom: none; padding-bottom: 4px; }
button.recorder { border: 1px solid @line; box-shadow: none; border-radius: 10px; background: alpha(@text, 0.03); padding: 5px 7px; min-height: 32px; outline: none; }
button.recorder:hover { background: alpha(@text, 0.06); }
button.recorder:focus { border-color: alpha(@accent, 0.6); }
button.recorder.recording { border-color: @accent; background: @glow; }
.cap { background: @card; color: @text; border: 1px solid @edge; border-bottom-width: 2px; border-radius: 7px; padding: 2px 6px; min-width: 16px; min-height: 22px; font-size: 15px; }
.recorder-words { color: @soft; font-size: 13px; }
.status-line { margin-top: 9px; }
.status-dot { min-width: 8px; min-height: 8px; border-radius: 4px; margin: 4px 0 0 2px; background: @faint; }
.status-dot.good { background: #3fb27f; } .status-dot.partial { background: #eeb64c; } .status-dot.bad { background: #e0605b; }
.status { font-size: 12px; color: @soft; }
.warning { background: alpha(#eeb64c, 0.18); border-radius: 8px; padding: 7px 10px; margin-top: 9px; font-size: 12px; color: @text; }
switch { border: none; background: alpha(@text, 0.16); border-radius: 14px; outline: none; font-size: 1px; color: transparent; }
switch:checked { background: @accent; }
switch slider { border: none; box-shadow: none; background: #ffffff; border-radius: 12px; min-width: 24px; min-height: 24px; margin: 2px; }
switch image { color: transparent; }

.onboarding { padding: 44px 36px 36px 36px; }
.onboarding-title { font-size: 23px; font-weight: bold; margin: 36px 0 12px 0; }
.onboarding-text { font-size: 15px; color: @soft; }
.page-dot { min-width: 8px; min-height: 8px; border-radius: 4px; background: @line; }
.page-dot.current { background: @accent; }
)";

} // namespace

void applyStyle(bool isDark)
{
    static GtkCssProvider* const provider = [] {
        auto* const made = gtk_css_provider_new();
        gtk_style_context_add_provider_for_screen(
            gdk_screen_get_default(), GTK_STYLE_PROVIDER(made), GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
        return made;
    }();

    g_object_set(gtk_settings_get_default(), "gtk-application-prefer-dark-theme", isDark, nullptr);
    auto const style = std::string(isDark ? darkColors : lightColors) + rules;
    GError* error = nullptr;
    if (!gtk_css_provider_load_from_data(provider, style.c_str(), -1, &error)) {
        g_warning("The style does not parse: %s", error->message);
        g_error_free(error);
    }
}

} // namespace ideas
