#include "display/form_about.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QPointer>

#include <map>

#include "core/version.h"
#include "support/ui_fixture.h"

namespace lumiquilt {
namespace {

// A key store in memory that counts what was opened and closed.
class FakeKeys : public SystemKeys {
  public:
    struct Value {
        uint32_t type;
        std::string bytes;
    };
    std::map<std::string, std::map<std::string, Value>> keys;
    int opened = 0;
    std::vector<uint32_t> closed;

    bool openKey(uint32_t root, const std::string& keyName, uint32_t& handle) override {
        if (root != kHkeyLocalMachine || keys.count(keyName) == 0) {
            return false;
        }
        handle = static_cast<uint32_t>(100 + ++opened);
        m_open[handle] = keyName;
        return true;
    }
    bool queryValue(uint32_t handle, const std::string& valueName, uint32_t& type,
                    std::string& bytes) override {
        auto& values = keys[m_open.at(handle)];
        auto it = values.find(valueName);
        if (it == values.end()) {
            return false;
        }
        type = it->second.type;
        bytes = it->second.bytes;
        return true;
    }
    void closeKey(uint32_t handle) override { closed.push_back(handle); }

  private:
    std::map<uint32_t, std::string> m_open;
};

constexpr const char* kInfo = "SOFTWARE\\Microsoft\\Shared Tools\\MSINFO";
constexpr const char* kLocation = "SOFTWARE\\Microsoft\\Shared Tools Location";

std::string bytes(std::initializer_list<unsigned char> list) {
    return std::string(list.begin(), list.end());
}

TEST(GetKeyValueTest, MissingKeyOrValueGivesNothing) {
    FakeKeys keys;
    std::string value = "left over";
    EXPECT_FALSE(GetKeyValue(keys, kHkeyLocalMachine, kInfo, "PATH", value));
    EXPECT_EQ(value, "");

    // The key is there but not the value: the handle it got is closed.
    keys.keys[kInfo]["Other"] = {kRegSz, std::string("x\0", 2)};
    value = "left over";
    EXPECT_FALSE(GetKeyValue(keys, kHkeyLocalMachine, kInfo, "PATH", value));
    EXPECT_EQ(value, "");
    EXPECT_EQ(keys.opened, 1);
    ASSERT_FALSE(keys.closed.empty());
    EXPECT_EQ(keys.closed.back(), 101u);
}

struct ValueRow {
    const char* name;
    uint32_t type;
    std::string stored;
    std::string before;
    bool ok;
    std::string expected;
};

class GetKeyValueRows : public ::testing::TestWithParam<ValueRow> {};

TEST_P(GetKeyValueRows, ReadsTheValue) {
    FakeKeys keys;
    keys.keys[kInfo]["PATH"] = {GetParam().type, GetParam().stored};
    std::string value = GetParam().before;
    EXPECT_EQ(GetKeyValue(keys, kHkeyLocalMachine, kInfo, "PATH", value), GetParam().ok);
    EXPECT_EQ(value, GetParam().expected);
    EXPECT_EQ(keys.closed.size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(
    Values, GetKeyValueRows,
    ::testing::Values(
        ValueRow{"TextLosesItsZeroByte", kRegSz, std::string("/opt/info/run\0", 14), "", true,
                 "/opt/info/run"},
        ValueRow{"TextWithoutZeroByte", kRegSz, "abc", "", true, "abc"},
        ValueRow{"EmptyText", kRegSz, "", "x", true, ""},
        ValueRow{"NumberLowByteFirst", kRegDword, bytes({0x78, 0x56, 0x34, 0x12}), "", true,
                 "305419896"},
        ValueRow{"NegativeNumber", kRegDword, bytes({0xFE, 0xFF, 0xFF, 0xFF}), "", true, "-2"},
        ValueRow{"OtherTypeKeepsTheValue", 3, "bin", "as it came", true, "as it came"},
        ValueRow{"LongerThanTheBuffer", kRegSz, std::string(1025, 'a'), "x", false, ""}),
    [](const auto& info) { return std::string(info.param.name); });

class StartSysInfoTest : public ::testing::Test {
  protected:
    void expectUnavailable() {
        ASSERT_EQ(ui.messages.size(), 1u);
        EXPECT_EQ(ui.messages[0].text, "System Information Is Unavailable At This Time");
        EXPECT_EQ(ui.messages[0].icon, MessageIcon::none);
        EXPECT_EQ(ui.messages[0].buttons, MessageButtons::ok);
    }
    FakeKeys keys;
    ScriptedModalUi ui;
    testing::TestFolder dir;
};

TEST_F(StartSysInfoTest, NoKeysNoProgram) {
    StartSysInfo(keys, ui);
    EXPECT_TRUE(ui.started.empty());
    expectUnavailable();
}

TEST_F(StartSysInfoTest, PathValueIsStartedUnchanged) {
    // No file check on this key: the program is started as named.
    keys.keys[kInfo]["PATH"] = {kRegSz, std::string("/no/such/info tool\0", 19)};
    StartSysInfo(keys, ui);
    ASSERT_EQ(ui.started.size(), 1u);
    EXPECT_EQ(ui.started[0].first, "/no/such/info tool");
    EXPECT_TRUE(ui.messages.empty());
}

TEST_F(StartSysInfoTest, SecondKeyNeedsTheProgramInItsFolder) {
    keys.keys[kLocation]["MSINFO"] = {kRegSz, dir.root()};
    StartSysInfo(keys, ui);
    EXPECT_TRUE(ui.started.empty());
    expectUnavailable();

    ui.messages.clear();
    testing::writeBytes(dir.path("MSINFO32.EXE"), "x");
    StartSysInfo(keys, ui);
    ASSERT_EQ(ui.started.size(), 1u);
    EXPECT_EQ(ui.started[0].first, dir.path("MSINFO32.EXE"));
    EXPECT_TRUE(ui.messages.empty());
}

TEST_F(StartSysInfoTest, AProgramThatWillNotStart) {
    keys.keys[kInfo]["PATH"] = {kRegSz, "/no/such/program"};
    ui.reallyStartPrograms = true;
    StartSysInfo(keys, ui);
    expectUnavailable();
}

using AboutTest = testing::UiTest;

TEST_F(AboutTest, TheBoxReadsAsDesigned) {
    auto keys = std::make_unique<FakeKeys>();
    FakeKeys* store = keys.get();
    frmAbout about(ui, std::move(keys));
    EXPECT_EQ(about.windowTitle(), "About Lumiquilt");
    EXPECT_EQ(about.lblTitle->text(), "Lumiquilt");
    EXPECT_EQ(about.lblVersion->text().toStdString(), "Version " + std::to_string(kVersionMajor) +
                                                          "." + std::to_string(kVersionMinor) +
                                                          "." + std::to_string(kVersionRevision));
    EXPECT_EQ(about.lblVersion->text().toStdString(), std::string("Version ") + kVersionText);
    EXPECT_TRUE(about.lblDescription->text().contains("single well exposed picture"));
    EXPECT_TRUE(about.lblDescription->text().contains(kProductWebPage));
    EXPECT_FALSE(about.lblDisclaimer->text().isEmpty());
    EXPECT_EQ(about.cmdSysInfo->text(), "&System Info...");
    EXPECT_FALSE(about.picIcon->pixmap().isNull());

    emit about.lblDescription->linkActivated(kProductWebPage);
    ASSERT_EQ(ui.opened.size(), 1u);
    EXPECT_EQ(ui.opened[0], kProductWebPage);

    store->keys[kInfo]["PATH"] = {kRegSz, "/usr/bin/info-tool"};
    about.cmdSysInfo->click();
    ASSERT_EQ(ui.started.size(), 1u);
    EXPECT_EQ(ui.started[0].first, "/usr/bin/info-tool");
}

TEST_F(AboutTest, HelpAboutOpensTheBoxAndOkClosesIt) {
    start();
    form().m.mnuAbout->trigger();
    QPointer<frmAbout> about = form().findChild<frmAbout*>();
    ASSERT_TRUE(about);
    EXPECT_TRUE(about->isVisible());
    EXPECT_TRUE(about->isModal());
    about->cmdOK->click();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(about);
}

}  // namespace
}  // namespace lumiquilt
