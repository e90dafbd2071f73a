#include "sim/compartment.h"

#include <stdexcept>
#include <string_view>

namespace lumora::sim {

namespace {
constexpr std::string_view kChanger = "changer:";
}

void Compartment::load(const std::string& name, double t) {
    std::vector<std::unique_ptr<Sample>> cells;
    const bool changer = name.starts_with(kChanger);
    if (changer) {
        std::string_view list = std::string_view(name).substr(kChanger.size());
        while (true) {
            const std::size_t comma = list.find(',');
            const std::string_view item = list.substr(0, comma);
            if (item.empty()) throw std::invalid_argument("changer: empty position in '" + name + "'");
            if (item.starts_with("changer")) throw std::invalid_argument("a changer cannot hold a changer");
            cells.push_back(make_sample(item));
            if (comma == std::string_view::npos) break;
            list.remove_prefix(comma + 1);
        }
    } else {
        cells.push_back(make_sample(name));
    }
    cells_ = std::move(cells);
    changer_ = changer;
    name_ = name;
    position_ = 1;
    loaded_at_ = t;
}

void Compartment::select(int n) {
    if (!changer_) throw std::invalid_argument("no sample changer in the compartment");
    if (n < 1 || n > positions())
        throw std::invalid_argument("the changer has positions 1 to " + std::to_string(positions()));
    position_ = n;
}

double Compartment::absorbance(double nm, double t) const {
    if (cells_.empty()) return 0.0;
    return cells_[position_ - 1]->absorbance(nm, t - loaded_at_);
}

} // namespace lumora::sim
