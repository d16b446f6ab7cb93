#include "hosts/command/options/KernelSourceOptions.h"

#include "hosts/command/arguments/NumberRange.h"
#include "hosts/command/kernels/BlurKernel.h"

namespace velorn {
namespace {

constexpr NumberRange kScales{1.0f, static_cast<float>(kLargestKernelSide)};
constexpr const char* kOnlyWithBlind = "; only with --blind";

} // namespace

void KernelSourceOptions::addScale(ArgumentParser& parser, const Argument& kernel) {
    m_scaleOption =
        parser
            .add("--kernel-scale", m_scale,
                 std::string("pixels, ") + kScales.text() +
                     ", default: as the file says, else 1; only with --kernel"
                     "\nSide of the square that shows one weight in a kernel picture. Pictures "
                     "written by velorn contain this number.")
            .valueName("N")
            .group(kGroup)
            .needs(kernel);
}

void KernelSourceOptions::addBlind(ArgumentParser& parser, const std::string& group,
                                   const std::string& help) {
    m_blind = m_search.addSize(parser, "--blind", help).valueName("[N[xM]]").group(group);
    m_search.addTurn(parser, kOnlyWithBlind).group(kGroup).needs(m_blind);
    for (Argument& argument : m_search.addChoices(parser, kOnlyWithBlind)) {
        argument.group(kGroup).needs(m_blind);
    }
}

void KernelSourceOptions::addLocal(ArgumentParser& parser) {
    m_search.addLocal(parser, kOnlyWithBlind).group(kGroup).needs(m_blind);
}

std::optional<int> KernelSourceOptions::scale() const {
    if (!m_scaleOption.isGiven()) {
        return std::nullopt;
    }
    kScales.check("--kernel-scale", static_cast<float>(m_scale));
    return m_scale;
}

} // namespace velorn
