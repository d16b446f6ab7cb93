// Measures the blind search for kernels: blurs sharp pictures, finds the kernels, restores the
// pictures with them and with the true ones, and compares. Blurs and drawn pictures form two
// halves: settings are tuned on half 0, and half 1 shows what they are worth.
#include "BlindCases.h"
#include "BlindTrial.h"
#include "ReliabilityTable.h"
#include "runTool.h"
#include "TrialSummary.h"

#include <algorithm>
#include <iomanip>
#include <iostream>

namespace {

using namespace velorn;
using namespace velorn::tools;

/// Summaries in the order in which their names are first met.
class Summaries {
public:
    TrialSummary& of(const std::string& name) {
        const auto found = std::ranges::find(m_named, name, &Named::first);
        return found != m_named.end() ? found->second
                                      : m_named.emplace_back(name, TrialSummary()).second;
    }

    void print() const {
        for (const auto& [name, summary] : m_named) {
            summary.print(name);
        }
    }

private:
    using Named = std::pair<std::string, TrialSummary>;
    std::vector<Named> m_named;
};

void printTrial(const std::string& picture, const std::string& blur, double noise,
                const std::optional<BlindTrial>& trial) {
    std::cout << std::fixed << "| " << picture << " | " << blur << " | " << std::setprecision(1)
              << noise << " | ";
    if (!trial) {
        std::cout << "not found |||||" << std::endl;
        return;
    }
    std::cout << std::setprecision(2) << trial->likeness << " | " << trial->blurred << " | "
              << trial->blind << " | " << trial->known << " | " << trial->confidence << " |"
              << std::endl;
}

void run(const CaseRules& rules) {
    std::cout
        << "\n| picture | blur | noise | likeness | blurred dB | blind dB | known dB | confidence "
           "|\n|---|---|---|---|---|---|---|---|\n";
    Summaries byFamily;
    Summaries byPicture;
    TrialSummary all;
    ReliabilityTable reliability;
    forEachCase(rules, [&](const BlindCase& each) {
        const auto trial = blindTrial(each.photograph, each.blur.blur.kernel);
        printTrial(each.picture, each.blur.blur.name, each.noise, trial);
        byFamily.of(each.blur.family).count(trial);
        if (each.isBlurred()) {
            byPicture.of(each.picture).count(trial);
            all.count(trial);
            if (trial) {
                reliability.count(*trial);
            }
        }
    });
    std::cout << "\nHalf " << rules.half << "\n\n";
    TrialSummary::printHeading("blur");
    byFamily.print();
    all.print("all blurred");
    std::cout << '\n';
    TrialSummary::printHeading("picture");
    byPicture.print();
    std::cout << '\n';
    reliability.print();
}

} // namespace

int main(int argc, char** argv) {
    ArgumentParser parser("studyBlind",
                          "Measures the blind search for kernels on pictures with known blurs.");
    CaseRules rules;
    rules.addTo(parser);
    return runTool("studyBlind", parser, argc, argv, [&] {
        rules.check();
        run(rules);
    });
}
