#include <gtest/gtest.h>

#include <QSet>

#include "shell/SHIELD.h"

using namespace SHIELD;

namespace {

KeyEvent down(int vk, bool ctrl = false, bool caps = false) {
    return KeyEvent{0, KeyDown, vk, ctrl, caps};
}
KeyEvent up(int vk, bool ctrl = false, bool caps = false) {
    return KeyEvent{0, KeyUp, vk, ctrl, caps};
}

class ShieldTest : public ::testing::Test {
protected:
    void SetUp() override { state() = {}; }
    void TearDown() override { state() = {}; }

    // Plays the events against one text box, as the window would.
    TextControl type(TextControl box, const std::vector<KeyEvent> &events) {
        for (const KeyEvent &e : events) {
            const ShieldAction a = ShieldKeyProc(e, &box);
            if (a.write) box = a.control;
        }
        return box;
    }
};

TEST_F(ShieldTest, TextKeysAreWrittenOverTheSelectionWithTheCaretBehind) {
    struct Case {
        const char *name;
        TextControl box;
        std::vector<KeyEvent> events;
        QString text;
        int caret;
    };
    const std::vector<Case> cases = {
        {"aB1 replaces the selection",
         {"hello world", 6, 5},
         {down('A'), up('A'), down(VkLeftShift), down('B'), up('B'), up(VkLeftShift), down('1'), up('1')},
         "hello aB1",
         9},
        {"inserts at the caret", {"ac", 1, 0}, {down('B')}, "abc", 2},
        {"caps lock makes a digit its shifted sign", {"", 0, 0}, {down('1', false, true)}, "!", 1},
        {"caps lock and Shift cancel",
         {"", 0, 0},
         {down(VkLeftShift, false, true), down('Q', false, true)},
         "q",
         1},
        {"either Shift's release clears it",
         {"", 0, 0},
         {down(VkLeftShift), up(VkRightShift), down('Q')},
         "q",
         1},
        {"punctuation on both levels",
         {"", 0, 0},
         {down(186), down(VkRightShift), down(222), down(226)},
         ";\"|",
         3},
        {"Ctrl with another letter is no command", {"x", 1, 0}, {down('B', true), down('Q', true)}, "xbq", 3},
        {"select all, undo and redo write nothing",
         {"x", 1, 0},
         {down(VkA, true), down(VkZ, true), down(VkLeftShift), down(VkZ, true), up(VkLeftShift),
          down(VkY, true)},
         "x",
         1},
    };
    for (const Case &c : cases) {
        state() = {};
        const TextControl after = type(c.box, c.events);
        EXPECT_EQ(after.Text, c.text) << c.name;
        EXPECT_EQ(after.SelStart, c.caret) << c.name;
        EXPECT_EQ(after.SelLength, 0) << c.name;
    }
}

TEST_F(ShieldTest, WhatIsSwallowedWhatPassesAndWhatArmsTheWipe) {
    const TextControl box{"abc", 3, 0};
    struct Case {
        const char *name;
        KeyEvent event;
        bool swallow, write, armWipe;
    };
    const std::vector<Case> cases = {
        {"a letter", down('K'), true, true, false},
        {"a letter's key up goes to the window", up('K'), false, false, false},
        {"Alt with a letter stays an access key", KeyEvent{0, SysKeyDown, 'F'}, false, false, false},
        {"Enter", down(13), false, false, false},
        {"Backspace", down(8), false, false, false},
        {"space", down(VkSpace), false, false, false},
        {"a number pad digit", down(97), false, false, false},
        {"Ctrl+C", down(VkC, true), false, false, true},
        {"Ctrl+X", down(VkX, true), false, false, true},
        {"Ctrl+V", down(VkV, true), false, false, true},
        {"Ctrl+C released", up(VkC, true), false, false, false},
        {"Ctrl+B writes b", down('B', true), true, true, false},
        {"Ctrl+1 writes 1", down('1', true), true, true, false},
        {"another code", KeyEvent{1, KeyDown, 'K'}, false, false, false},
    };
    for (const Case &c : cases) {
        state() = {};
        const ShieldAction a = ShieldKeyProc(c.event, &box);
        EXPECT_EQ(a.swallow, c.swallow) << c.name;
        EXPECT_EQ(a.write, c.write) << c.name;
        EXPECT_EQ(a.armWipe, c.armWipe) << c.name;
    }
}

// Select all, undo and redo are the box's commands whatever the desktop's
// key scheme: the shield takes the key and carries the command out.
TEST_F(ShieldTest, CtrlAZAndYAreTheTextBoxsCommands) {
    const TextControl box{"abc", 3, 0};
    struct Case {
        const char *name;
        std::vector<KeyEvent> events;
        bool withBox;
        EditCommand command;
    };
    const std::vector<Case> cases = {
        {"Ctrl+A selects all", {down(VkA, true)}, true, EditCommand::SelectAll},
        {"Ctrl+Z undoes", {down(VkZ, true)}, true, EditCommand::Undo},
        {"Ctrl+Y redoes", {down(VkY, true)}, true, EditCommand::Redo},
        {"Ctrl+Shift+Z redoes", {down(VkLeftShift), down(VkZ, true)}, true, EditCommand::Redo},
        {"Shift released, Ctrl+Z undoes",
         {down(VkLeftShift), up(VkRightShift), down(VkZ, true)},
         true,
         EditCommand::Undo},
        {"without a text box Ctrl+A passes on", {down(VkA, true)}, false, EditCommand::None},
        {"Ctrl+Z released", {up(VkZ, true)}, true, EditCommand::None},
        {"Alt+Ctrl+A", {KeyEvent{0, SysKeyDown, VkA, true}}, true, EditCommand::None},
        {"Ctrl+C is the clipboard's", {down(VkC, true)}, true, EditCommand::None},
    };
    for (const Case &c : cases) {
        state() = {};
        ShieldAction a;
        for (const KeyEvent &e : c.events)
            a = ShieldKeyProc(e, c.withBox ? &box : nullptr);
        EXPECT_EQ(a.command, c.command) << c.name;
        EXPECT_EQ(a.swallow, c.command != EditCommand::None) << c.name;
        EXPECT_FALSE(a.write) << c.name;
    }
}

TEST_F(ShieldTest, ALetterWithoutATextBoxIsGone) {
    const ShieldAction a = ShieldKeyProc(down('K'), nullptr);
    EXPECT_TRUE(a.swallow);
    EXPECT_FALSE(a.write);
}

TEST_F(ShieldTest, TheAddressWindowOnlyWatchesCutAndCopy) {
    struct Case {
        KeyEvent event;
        bool armWipe;
    };
    const std::vector<Case> cases = {
        {down(VkC, true), true},  {up(VkX, true), true}, {KeyEvent{0, SysKeyUp, VkC, true}, true},
        {down(VkV, true), false}, {down(VkC), false},    {KeyEvent{1, KeyDown, VkC, true}, false},
    };
    for (const Case &c : cases) {
        const ShieldAction a = WatchKeyProc(c.event);
        EXPECT_EQ(a.armWipe, c.armWipe) << c.event.vkCode << " " << c.event.message;
        EXPECT_FALSE(a.swallow);
    }
}

TEST_F(ShieldTest, AWindowOutOfFrontHoldsNoHookAndComesBackShielded) {
    WindowHook address;
    HookAtLoad(address, HookProc::Watch);
    TimerHook(address, true);
    EXPECT_EQ(address.installed, HookProc::Watch);
    TimerHook(address, false);
    EXPECT_EQ(address.installed, HookProc::None);
    TimerHook(address, true);
    EXPECT_EQ(address.installed, HookProc::Shield);
    HookAtUnload(address);
    EXPECT_EQ(address.installed, HookProc::None);
}

TEST_F(ShieldTest, BurstsDrawTwoToNineKeysFromTheTablesFirstPart) {
    const auto keys = BurstKeys();
    EXPECT_EQ(keys[0], 'A');
    EXPECT_EQ(keys[73], 187);
    EXPECT_EQ(keys[103], 'Z');
    EXPECT_EQ(keys[104], VkSpace);
    EXPECT_EQ(keys[134], VkSpace);

    QSet<int> lengths;
    for (int i = 0; i < 2000; ++i) {
        const QList<BurstKey> burst = DrawBurst();
        lengths.insert(static_cast<int>(burst.size()));
        for (const BurstKey &k : burst) {
            // Shifted draws come from the first 36 entries: letters and digits only.
            if (k.shift) {
                EXPECT_TRUE((k.vk >= 'A' && k.vk <= 'Z') || (k.vk >= '0' && k.vk <= '9')) << k.vk;
            }
            EXPECT_TRUE(IsTextKey(k.vk) || k.vk == VkSpace) << k.vk;
        }
    }
    EXPECT_EQ(lengths, QSet<int>({2, 3, 4, 5, 6, 7, 8, 9}));
}

} // namespace
