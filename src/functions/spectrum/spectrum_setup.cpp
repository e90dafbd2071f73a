#include "spectrum_setup.h"

namespace lumora {

SpectrumSetup spectrum_setup;

QString speed_name(int speed) {
    switch (speed) {
    case 0:
        return QStringLiteral("High");
    case 1:
        return QStringLiteral("Normal");
    case 2:
        return QStringLiteral("Low");
    default:
        return {};
    }
}

} // namespace lumora
