#include "link_context.h"

namespace lumora {

link_context link_ctx;

void set_panel(int panel, const QString& text) {
    if (link_ctx.hooks.set_panel) link_ctx.hooks.set_panel(panel, text);
}

QString panel_text(int panel) {
    return link_ctx.hooks.panel_text ? link_ctx.hooks.panel_text(panel) : QString();
}

void link_hooks::set_reading(int mode, std::function<void(std::int32_t mean)> data,
                             std::function<void(std::int32_t value)> zero, std::function<bool()> flag) {
    const auto m = static_cast<std::size_t>(mode);
    show_data[m] = std::move(data);
    show_zero[m] = std::move(zero);
    reading_flag[m] = std::move(flag);
}

} // namespace lumora
