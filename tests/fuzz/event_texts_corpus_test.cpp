#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

const std::string kTexts[] = {
    "Alarm (1002.0038) the inlet temp sensor reading is out of range, it is too high",
    "Alarm [12V voltage sensor shows an overvoltage]",
    "Alarm (1) the 12V voltage supply is out of range, it is too high",
    "[A1002.0038][MP] Temp overheat, CPU above its limit",
    "0;0;0;4;1;4386;0123456789ABCDEF;1",
    "0;0;0;4;1;4386;   SHORT;99999999999999999999;1",
    "010400,N,200000051E000001;010500,N,200000051E000002",
    ",,;,,;,"};

/** Beginnings and pieces of known texts, joined at random with bytes of all values; some fill their field. */
TEST(EventTextsCorpus, RandomTexts) {
    std::mt19937 random(1400);
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (size_t pieces = random() % 6; pieces > 0; --pieces) {
            const std::string& known = kTexts[random() % std::size(kTexts)];
            const size_t start = random() % 2 == 0 ? 0 : random() % (known.size() + 1);
            text += known.substr(start, random() % 80);
            text.append(random() % 4, static_cast<char>(random() % 256));
            if (random() % 16 == 0) text.append(random() % 1400, " ;,9)["[random() % 6]);
        }
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(text.data()), text.size());
    }
}

}  // namespace
