// The sample compartment: one cuvette, or a changer holding several with one in the beam.
#pragma once

#include "sim/samples.h"

#include <memory>
#include <string>
#include <vector>

namespace lumora::sim {

class Compartment {
public:
    // Loads a sample by name at time t (a changer: "changer:<s1>,<s2>,..." with position 1 in the beam).
    // Throws std::invalid_argument on a bad name and leaves the compartment as it was.
    void load(const std::string& name, double t);
    // Moves changer position n (1-based) into the beam. Throws std::invalid_argument without a changer
    // or with a position it does not have.
    void select(int n);

    double absorbance(double nm, double t) const;
    const std::string& name() const { return name_; }
    int position() const { return position_; }
    int positions() const { return static_cast<int>(cells_.size()); }
    bool is_changer() const { return changer_; }

private:
    std::string name_;
    std::vector<std::unique_ptr<Sample>> cells_;
    bool changer_ = false;
    int position_ = 1;
    double loaded_at_ = 0.0; // [s] when the cuvettes went in; a reaction runs from then on
};

} // namespace lumora::sim
