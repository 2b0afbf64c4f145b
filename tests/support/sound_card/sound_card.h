#pragma once

#include <string>

#include "tests/support/temporary_folder.h"

namespace tarno2::test {

/// For as long as it lives the sound library knows these cards and no others, in this process and in those that it
/// starts. A definition is what counter_card.cpp tells, without its type: {"four", "channels 4 ..."}.
class SoundCards {
public:
    struct Card {
        std::string name;
        std::string definition;
    };
    template <typename Cards>
    SoundCards(const TemporaryFolder& folder, const Cards& cards)
        : environment_("ALSA_CONFIG_PATH", folder.write(freshName(), configuration(cards))) {}

private:
    /// The library reads a file of the same name, written within one second, no second time.
    static std::string freshName() {
        static int count = 0;
        return "asound" + std::to_string(++count) + ".conf";
    }
    template <typename Cards>
    static std::string configuration(const Cards& cards) {
        std::string text = "pcm_type.tarno2_card { lib " + quoted(COUNTER_CARD) + " }\n";
        for (const Card& card : cards) {
            text += "pcm." + card.name + " { type tarno2_card " + card.definition + " }\n";
        }
        return text;
    }

    ScopedEnvironment environment_;
};

}  // namespace tarno2::test
