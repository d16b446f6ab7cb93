#pragma once

#include "BlurFamilies.h"
#include "hosts/command/arguments/ArgumentParser.h"
#include "SamplePictures.h"

#include <functional>
#include <string>
#include <vector>

namespace velorn::tools {

/// Which pictures a study of the blind search blurs, and how.
struct CaseRules {
    std::vector<std::string> files; ///< sharp photographs, NAME=FILE
    int half = 0;                   ///< of the blurs and the drawn pictures
    int every = 1;                  ///< one of so many blurred cases is measured
    std::vector<double> noises{0.5, 1.0, 2.0, 3.0};

    void addTo(ArgumentParser& parser);
    /// @throws UsageFailure
    void check() const;
};

/// A picture with a known blur.
struct BlindCase {
    std::string picture;
    FamilyBlur blur;
    double noise = 0.0;
    Photograph photograph;

    bool isBlurred() const { return blur.blur.kernel.width > 1; }
};

/// Calls `work` for each case in turn: the drawn pictures of a half, then the photographs, with
/// each blur.
void forEachCase(const CaseRules& rules, const std::function<void(const BlindCase&)>& work);

} // namespace velorn::tools
