#pragma once
// A whole suite in virtual time for behaviour tests: fresh settings folder,
// the event log captured as text, and helpers to run time on and to act as
// the operator does (through the message queue, like a click).
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <sstream>
#include <string>

#include "app/suite.h"
#include "support/temp_dir.h"

namespace mv::test {

class SuiteRig : public ::testing::Test {
protected:
    void startSuite(const LocalDateTime& at, const std::string& voiceFolder,
                    const std::function<void(Suite&)>& beforeStart = {}) {
        SuiteOptions o;
        o.settingsDir = settingsDir();
        o.virtualStart = at;
        o.logStream = &logText;
        o.defaultVoiceFolder = voiceFolder;
        suite = std::make_unique<Suite>(o);
        if (beforeStart) beforeStart(*suite);
        std::string message;
        ASSERT_EQ(suite->program().start("hub", nullptr, message), Program::StartResult::Started) << message;
    }
    std::filesystem::path settingsDir() const { return dir.path() / "settings"; }
    void run(int64_t ms) { suite->scheduler().runUntil(suite->scheduler().now() + ms); }
    void operate(std::function<void()> action) {
        suite->scheduler().post(std::move(action));
        run(0);
    }
    size_t logCount(const std::string& needle) const {
        const std::string all = logText.str();
        size_t n = 0;
        for (size_t at = all.find(needle); at != std::string::npos; at = all.find(needle, at + 1)) ++n;
        return n;
    }

    TempDir dir;
    std::ostringstream logText;
    std::unique_ptr<Suite> suite;
};

}  // namespace mv::test
