// Every line the event log writes is one valid JSON object in valid UTF-8,
// whatever bytes a station, a chat line or a settings file brought in.
#include "core/event_log.h"

#include <gtest/gtest.h>

#include <iconv.h>

#include <sstream>

namespace mv {
namespace {

// Whether `text` is well-formed UTF-8, as the C library's converter judges it.
bool validUtf8(const std::string& text) {
    iconv_t cd = iconv_open("UTF-32LE", "UTF-8");
    if (cd == reinterpret_cast<iconv_t>(-1)) return false;
    std::string in = text;
    std::string out(text.size() * 4 + 4, '\0');
    char* inPtr = in.data();
    char* outPtr = out.data();
    size_t inLeft = in.size(), outLeft = out.size();
    const size_t r = iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft);
    iconv_close(cd);
    return r != static_cast<size_t>(-1) && inLeft == 0;
}

TEST(EventLogTest, EveryLineIsValidUtf8JsonWhateverBytesCameIn) {
    std::ostringstream out;
    EventLog log;
    log.setTimeSource([] { return LocalDateTime{2026, 11, 22, 14, 0, 0, 0}; });
    log.setStream(&out);
    ASSERT_FALSE(validUtf8("\xFF\xFE")) << "the checker must see the fault";

    log.hostEvent("EchoLink_ChatTextReceived", {std::string("EA4XYZ>\xFF\xFE hola caf\xE9\x07")});
    log.hostEvent("Echolink_connected", {std::string("EA4XYZ-L"), std::string("Jos\xE9 \"Pepe\""), std::string("10.0.0.1")});
    log.error("hub", std::string("Quillasp2.ini: TEXT37=\"\xC0\xAF\r\n\" is not a conference"));
    log.value("messages", std::string("Text1\xFF"), std::string("rlo\xE2\x80\xAE"));

    std::istringstream lines(out.str());
    std::vector<std::string> all;
    for (std::string line; std::getline(lines, line);) {
        EXPECT_TRUE(validUtf8(line)) << line;
        all.push_back(line);
    }
    ASSERT_EQ(all.size(), 4u);
    EXPECT_EQ(all[0],
              "{\"t\":\"2026-11-22T14:00:00.000\",\"kind\":\"event\",\"event\":\"EchoLink_ChatTextReceived\","
              "\"args\":[\"EA4XYZ>\xEF\xBF\xBD\xEF\xBF\xBD hola caf\xEF\xBF\xBD\\u0007\"]}");
    EXPECT_NE(all[1].find("\"Jos\xEF\xBF\xBD \\\"Pepe\\\"\""), std::string::npos) << all[1];
    EXPECT_NE(all[2].find("TEXT37=\\\"\xEF\xBF\xBD\xEF\xBF\xBD\\r\\n\\\" is not"), std::string::npos) << all[2];
    EXPECT_NE(all[3].find("\"control\":\"Text1\xEF\xBF\xBD\",\"value\":\"rlo\\u202e\""), std::string::npos) << all[3];
}

}  // namespace
}  // namespace mv
