#include "link_context.h"

namespace lumora {

link_context link_ctx;

void set_panel(int panel, const QString& text) {
    if (link_ctx.hooks.set_panel) link_ctx.hooks.set_panel(panel, text);
}

QString panel_text(int panel) {
    return link_ctx.hooks.panel_text ? link_ctx.hooks.panel_text(panel) : QString();
}

} // namespace lumora
