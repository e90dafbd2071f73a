#pragma once
// The input rules of the lambda panel, as plain functions.
#include <string>

namespace lumora {

// The wavelength field on losing focus: the text's value cut to an integer, held to 330..1100.
int clamp_goto_wavelength(const std::string& text);
// The factor field on losing focus: held to 0..10000, in the format "0.000".
std::string clamp_factor_text(const std::string& text);

} // namespace lumora
