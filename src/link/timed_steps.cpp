#include "timed_steps.h"

#include "link_context.h"
#include "photometric.h"
#include "platform/numeric_text.h"
#include "shared_state.h"

namespace lumora {
namespace {

// "- 4.9sec" and its like: the countdown is rewritten on every frame of the delay.
void countdown(double seconds) {
    static QString text;
    text = QStringLiteral("- ");
    text += format_text(seconds, "###0.0sec");
    set_panel(1, text);
}

} // namespace

double due_time(const timed_plan& plan, int taken) {
    return plan.start + plan.step * taken;
}

bool sample_due(const timed_plan& plan, std::int32_t ticks, int taken) {
    return due_time(plan, taken) <= ticks * frame_seconds;
}

void timed_steps(int mode, std::int32_t value) {
    if (mode < 0 || mode >= static_cast<int>(link_ctx.hooks.timed.size())) return;
    const timed_schedule& s = link_ctx.hooks.timed[static_cast<std::size_t>(mode)];
    if (!s.ticks || !s.taken) return;
    if (*s.ticks == INT32_MAX) throw run_fault{"overflow"};
    ++*s.ticks;
    if (!(s.reading && s.reading())) {
        if (s.show_zero) s.show_zero(value);
        shared.reading_index = 0;
        return;
    }
    if (!s.plan) return;
    const timed_plan plan = s.plan();
    const double t = *s.ticks * frame_seconds;
    const bool kinetic = mode == mm_kinetic;
    if (t < plan.start) {
        if (kinetic && plan.lag_from >= 0) {
            const double x = t - plan.lag_from;
            set_panel(6, x >= 0 ? QStringLiteral("lag time...") : QStringLiteral("delay..."));
            set_panel(1, format_text(x, "###0.0sec"));
        } else {
            countdown(plan.start - t);
        }
        return;
    }
    set_panel(6, kinetic ? QStringLiteral("reading...") : QStringLiteral("Reading..."));
    if (sample_due(plan, *s.ticks, *s.taken) && s.show_data) s.show_data(value);
    // The end test comes after the sample, on every frame of the reading stage.
    if (plan.end >= 0 && plan.end <= t && s.stop_now) s.stop_now();
}

} // namespace lumora
