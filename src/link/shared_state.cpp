#include "shared_state.h"

namespace lumora {

shared_state shared;

void reset_shared_state() {
    shared = shared_state{};
}

void end_run_on_blank() {
    shared.measure_mode = mm_lambda_panel;
    shared.zero_pending = false;
}

void apply_start_defaults() {
    shared.lambda_now = shared.default_lambda;
    shared.lambda_prev = shared.default_lambda;
    shared.link_ready = true;
    shared.ping_count = 0;
    shared.lambda_show_mode = 0;
    shared.lambda_four_digits = false;
    shared.zero_pending = false;
    shared.conc_factor = 1.0f;
}

void set_default_colors() {
    static constexpr rgb defaults[20] = {{255, 0, 0},   {0, 0, 255},   {0, 255, 0},   {128, 0, 255},
                                         {0, 128, 128}, {255, 0, 255}, {0, 192, 192}, {192, 0, 192},
                                         {0, 0, 192},   {255, 128, 0}, {0, 0, 128},   {0, 192, 0},
                                         {255, 192, 0}, {0, 128, 0},   {192, 0, 0},   {128, 128, 0},
                                         {255, 0, 128}, {128, 0, 0},   {0, 255, 255}, {128, 0, 128}};
    for (int i = 0; i < 20; ++i)
        shared.curve_colors[static_cast<std::size_t>(i)] = defaults[i];
}

} // namespace lumora
