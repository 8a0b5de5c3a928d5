#include <stdexcept>

#include "datacache/transceivers.h"
#include "tests/support/CacheTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(MediaData, CleansSerialNumbers) {
    const std::pair<const char*, const char*> serials[] = {
        {"", ""},
        {"    ", ""},
        {"A B C", "A B C"},
        {"AB  12   ", "AB _12"},
        {"A    B", "A ___B"},
        {"  A", " _A"},
        {"A  B  C", "A _B _C"},
        {"0123456789ABCDE  ", "0123456789ABCDE"},     // 17 characters
        {"0123456789ABCDEFGH", "0123456789ABCDEFG"},  // 18
        {"0123456789ABCDE   ", "0123456789ABCDE _"},  // 18: the cut leaves spaces that stay
        {"                  ", " ________________"},  // 18
    };
    for (const auto& [text, clean] : serials) EXPECT_EQ(sanitizedSerial(text), clean) << text;
    EXPECT_EQ(CachePeer::sanitizedMediaVendorSN("A  B"), "A _B");
    EXPECT_EQ(CachePeer::sanitizedMediaVendorSN(nullptr), "");
}

TEST(MediaData, ReadsFormatAndVendor) {
    EXPECT_EQ(mediaFormatOf("0304"), MEDIA_SFP);
    EXPECT_EQ(mediaFormatOf("0B04"), MEDIA_UNKNOWN) << "read as a decimal number";
    EXPECT_EQ(mediaFormatOf("1104"), MEDIA_OTHER);
    EXPECT_EQ(mediaFormatOf(""), MEDIA_UNKNOWN);
    EXPECT_EQ(mediaFormatOf("3"), MEDIA_SFP);
    EXPECT_EQ(vendorOUIOf("0123456789ABCDEF"), "ABCDEF");
    EXPECT_EQ(vendorOUIOf("0123456789ABCDE"), "000000") << "too short";
}

class Transceiver : public CacheTest {
  protected:
    Transceiver() {
        start("switch = {wwn = '1000001122AABBCC'}\nports = {count = 4, transceiver = {oui = 0x00AABB}}");
    }
    /** Hands a media event to the dispatch; no scan follows. */
    void media(int code, const std::string& text) {
        vex_event_s event{};
        event.code = code;
        text.copy(event.text, sizeof event.text);
        const AccessGuard guard;
        peer().dispatch(&event);
    }
    /** What the getters say of a port: format, diagnostics, OUI, serial number. */
    std::string port(const std::string& index) {
        return std::to_string(cache().getTransceiverFormat(index)) +
               (cache().getTransceiverDDMSupported(index) ? " yes " : " no ") +
               cache().getTransceiverVendorOUI(index) + ' ' + cache().getTransceiverVendorSN(index);
    }
    static constexpr const char* kNothing = "2 no  ";
};

TEST_F(Transceiver, IndexesAreTexts) {
    EXPECT_EQ(port("1"), "0 yes 00AABB SIM0000000000001");
    EXPECT_EQ(port(" 01x"), port("1"));
    EXPECT_EQ(port("65537"), port("1")) << "cut to 16 bits";
    for (const char* text : {"", "x", "00", "-0", "65536"})
        EXPECT_EQ(port(text), kNothing) << '"' << text << "\" is read as 0 and is not \"0\"";
    EXPECT_EQ(port("255"), kNothing);
    for (const char* text : {"256", "65535"}) {
        try {
            port(text);
            ADD_FAILURE() << text;
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ(error.what(), "bitset::test");
        }
        EXPECT_EQ(cache().getPortType(text), 0);
        EXPECT_EQ(cache().getPortHWType(text), 0);
    }
    EXPECT_TRUE(lockIsFree()) << "the lock is released as the exception leaves";
}

TEST_F(Transceiver, MediaEventsChangeTheirPortOnly) {
    media(76, "9;9;9;3;1;4161;0123456789ABCDEF;257");  // 4161 is 4096 + 65
    EXPECT_EQ(port("3"), "1 yes A 0123456789ABCDEF") << "OUI and format are cut to a byte";
    media(77, "9;9;1;3");
    EXPECT_EQ(port("3"), kNothing);
    {
        const AccessGuard guard;
        EXPECT_EQ(peer().transceivers.mediaVendorOUI[3], "000000");
        EXPECT_EQ(peer().transceivers.mediaVendorSN[3], "0000000000000000");
        EXPECT_EQ(peer().transceivers.mediaFormat[3], 2);
    }
    media(76, "9;9;9;2;0;65;0123456789ABCDEF;1");
    EXPECT_EQ(port("2"), kNothing) << "presence 0 resets";
    EXPECT_EQ(port("1"), "0 yes 00AABB SIM0000000000001");
    EXPECT_FALSE(cache().workToDo()) << "no scan follows";
    EXPECT_THAT(events(), IsEmpty());
    media(76, "9;9;9;255;1;65;0123456789ABCDEF;1");
    const AccessGuard guard;
    EXPECT_TRUE(peer().transceivers.mediaPresent[255]);
}

TEST_F(Transceiver, MediaEventsThatSayTooLittleOrTooMuchChangeNothing) {
    const std::string unterminated = "1;2;3;0;1;5;" + std::string(1388, 'x');
    const std::tuple<int, std::string, std::string> texts[] = {
        {77, "1;2;3", "REMOVED event only contains 3 items, string = '1;2;3'"},
        {76, "", "INSTERTED event only contains -1 items, string = ''"},
        {76, unterminated, "INSTERTED event only contains 7 items, string = '" + unterminated + "'"}};
    for (const auto& [code, text, line] : texts) {
        media(code, text);
        EXPECT_EQ(log().back(), "2 DCACHE: VEX_EVENT_PORT_MEDIA_" + line);
    }
    for (const char* number : {"-1", "256", "65536", "2147483647", "-99999999999"}) {
        media(76, std::string("0;0;0;") + number + ";1;65;0123456789ABCDEF;1");
        media(77, std::string("0;0;0;") + number);
    }
    EXPECT_EQ(log().size(), 10U) << "no remark";
    for (const char* index : {"0", "3"})
        EXPECT_EQ(port(index), std::string("0 yes 00AABB SIM000000000000") + index);
}

}  // namespace
