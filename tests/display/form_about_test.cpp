#include "display/form_about.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QPointer>

#include <map>

#include "support/ui_fixture.h"

namespace lumiquilt {
namespace {

// A key store in memory, key by key a type and bytes by value name, that notes what
// was closed.
class FakeKeys : public SystemKeys {
  public:
    std::map<std::string, std::map<std::string, std::pair<uint32_t, std::string>>> keys;
    std::vector<uint32_t> closed;

    bool openKey(uint32_t root, const std::string& keyName, uint32_t& handle) override {
        if (root != kHkeyLocalMachine || keys.count(keyName) == 0) {
            return false;
        }
        m_open.push_back(keyName);
        handle = static_cast<uint32_t>(100 + m_open.size());
        return true;
    }
    bool queryValue(uint32_t handle, const std::string& valueName, uint32_t& type,
                    std::string& bytes) override {
        const auto& values = keys[m_open.at(handle - 101)];
        const auto it = values.find(valueName);
        if (it == values.end()) {
            return false;
        }
        std::tie(type, bytes) = it->second;
        return true;
    }
    void closeKey(uint32_t handle) override { closed.push_back(handle); }

  private:
    std::vector<std::string> m_open;
};

constexpr const char* kInfo = "SOFTWARE\\Microsoft\\Shared Tools\\MSINFO";
constexpr const char* kLocation = "SOFTWARE\\Microsoft\\Shared Tools Location";

std::string bytes(std::initializer_list<unsigned char> list) {
    return std::string(list.begin(), list.end());
}

// One row: the value stored under a name (no key at all when the name is null), what
// the caller's string held, and what the read gives.
struct ValueRow {
    const char* name;
    const char* valueName;
    uint32_t type;
    std::string stored;
    std::string before;
    bool ok;
    std::string expected;
};

class GetKeyValueRows : public ::testing::TestWithParam<ValueRow> {};

TEST_P(GetKeyValueRows, ReadsTheValueAndClosesTheKeyItGot) {
    const ValueRow& row = GetParam();
    FakeKeys keys;
    if (row.valueName) {
        keys.keys[kInfo][row.valueName] = {row.type, row.stored};
    }
    std::string value = row.before;
    EXPECT_EQ(GetKeyValue(keys, kHkeyLocalMachine, kInfo, "PATH", value), row.ok);
    EXPECT_EQ(value, row.expected);
    if (row.valueName) {  // the handle it got is closed, once
        EXPECT_EQ(keys.closed, std::vector<uint32_t>{101});
    }
}

INSTANTIATE_TEST_SUITE_P(
    Values, GetKeyValueRows,
    ::testing::Values(
        ValueRow{"NoKey", nullptr, kRegSz, "", "left over", false, ""},
        ValueRow{"NoValue", "Other", kRegSz, std::string("x\0", 2), "left over", false, ""},
        ValueRow{"TextLosesItsZeroByte", "PATH", kRegSz, std::string("/opt/info/run\0", 14), "",
                 true, "/opt/info/run"},
        ValueRow{"TextWithoutZeroByte", "PATH", kRegSz, "abc", "", true, "abc"},
        ValueRow{"EmptyText", "PATH", kRegSz, "", "x", true, ""},
        ValueRow{"NumberLowByteFirst", "PATH", kRegDword, bytes({0x78, 0x56, 0x34, 0x12}), "", true,
                 "305419896"},
        ValueRow{"NegativeNumber", "PATH", kRegDword, bytes({0xFE, 0xFF, 0xFF, 0xFF}), "", true,
                 "-2"},
        ValueRow{"OtherTypeKeepsTheValue", "PATH", 3, "bin", "as it came", true, "as it came"},
        ValueRow{"LongerThanTheBuffer", "PATH", kRegSz, std::string(1025, 'a'), "x", false, ""}),
    [](const auto& info) { return std::string(info.param.name); });

class StartSysInfoTest : public ::testing::Test {
  protected:
    // One call: the programs it starts, then "unavailable" for its message.
    std::vector<std::string> run() {
        ui.messages.clear();
        ui.started.clear();
        StartSysInfo(keys, ui);
        std::vector<std::string> out;
        for (const auto& started : ui.started) {
            out.push_back(started.first);
        }
        for (const MessageRecord& message : ui.messages) {
            EXPECT_EQ(message.text, "System Information Is Unavailable At This Time");
            EXPECT_EQ(message.icon, MessageIcon::none);
            EXPECT_EQ(message.buttons, MessageButtons::ok);
            out.emplace_back("unavailable");
        }
        return out;
    }
    FakeKeys keys;
    ScriptedModalUi ui;
    testing::TestFolder dir;
};

TEST_F(StartSysInfoTest, StartsTheProgramEitherKeyNamesOrSaysItIsUnavailable) {
    using Calls = std::vector<std::string>;
    EXPECT_EQ(run(), Calls{"unavailable"});
    // The second key names a folder, and the program must stand in it.
    keys.keys[kLocation]["MSINFO"] = {kRegSz, dir.root()};
    EXPECT_EQ(run(), Calls{"unavailable"});
    testing::writeBytes(dir.path("MSINFO32.EXE"), "x");
    EXPECT_EQ(run(), Calls{dir.path("MSINFO32.EXE")});
    // The first key goes first, and its program is started as named, unchecked.
    keys.keys[kInfo]["PATH"] = {kRegSz, std::string("/no/such/info tool\0", 19)};
    EXPECT_EQ(run(), Calls{"/no/such/info tool"});
    // A program that will not start.
    keys.keys[kInfo]["PATH"] = {kRegSz, "/no/such/program"};
    ui.reallyStartPrograms = true;
    EXPECT_EQ(run(), (Calls{"/no/such/program", "unavailable"}));
}

using AboutTest = testing::UiTest;

TEST_F(AboutTest, TheLinkOpensTheWebPageAndSystemInfoStartsTheProgram) {
    auto keys = std::make_unique<FakeKeys>();
    FakeKeys* store = keys.get();
    frmAbout about(ui, std::move(keys));
    EXPECT_TRUE(about.lblDescription->text().contains(kProductWebPage));
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
