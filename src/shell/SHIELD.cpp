#include "shell/SHIELD.h"

#include <algorithm>

#include "platform/Random.h"

namespace SHIELD {

State &state() {
    static State s;
    return s;
}

bool IsTextKey(int vk) {
    return (vk >= 48 && vk <= 57) || (vk >= 65 && vk <= 90) || (vk >= 186 && vk <= 192) ||
           (vk >= 219 && vk <= 222) || vk == VkOem102;
}

QString KeyToText(int vk, bool upper) {
    if (vk >= 65 && vk <= 90) return QString(QChar(upper ? vk : vk + 32));
    if (vk >= 48 && vk <= 57) return QString(QChar(upper ? ")!@#$%^&*("[vk - 48] : vk));
    if (vk == VkSpace) return QStringLiteral(" ");
    struct Pair {
        int vk;
        char plain, shifted;
    };
    static constexpr Pair punctuation[] = {
        {186, ';', ':'},  {187, '=', '+'}, {188, ',', '<'},  {189, '-', '_'},
        {190, '.', '>'},  {191, '/', '?'}, {192, '`', '~'},  {219, '[', '{'},
        {220, '\\', '|'}, {221, ']', '}'}, {222, '\'', '"'}, {VkOem102, '\\', '|'},
    };
    for (const Pair &p : punctuation)
        if (p.vk == vk) return QString(QChar(upper ? p.shifted : p.plain));
    return QString();
}

bool IsClipboardKey(const KeyEvent &event) {
    return event.ctrlDown && event.message == KeyDown &&
           (event.vkCode == VkX || event.vkCode == VkC || event.vkCode == VkV);
}

EditCommand EditCommandOf(const KeyEvent &event, bool shiftDown) {
    if (!event.ctrlDown || event.message != KeyDown) return EditCommand::None;
    switch (event.vkCode) {
    case VkA:
        return EditCommand::SelectAll;
    case VkZ:
        return shiftDown ? EditCommand::Redo : EditCommand::Undo;
    case VkY:
        return EditCommand::Redo;
    default:
        return EditCommand::None;
    }
}

bool CapsLockIsOn(qint16 keyState) {
    return keyState == 1 || keyState == -127;
}

namespace {

bool isKeyboardMessage(int message) {
    return message == KeyDown || message == KeyUp || message == SysKeyDown || message == SysKeyUp;
}

} // namespace

ShieldAction ShieldKeyProc(const KeyEvent &event, const TextControl *focused) {
    State &s = state();
    ShieldAction a;
    bool isText = false;
    if (event.code == 0 && isKeyboardMessage(event.message)) {
        s.vkCode = event.vkCode;
        if (s.vkCode == VkLeftShift || s.vkCode == VkRightShift) s.shiftDown = event.message == KeyDown;
        s.capsOn = event.capsOn;
        s.upperCase = s.capsOn != s.shiftDown;
        isText = IsTextKey(s.vkCode);
    }
    if (event.code == 0 && IsClipboardKey(event)) {
        isText = false;
        a.armWipe = true;
    }
    if (const EditCommand command = event.code == 0 ? EditCommandOf(event, s.shiftDown) : EditCommand::None;
        command != EditCommand::None) {
        isText = false;
        if (focused) {
            a.swallow = true;
            a.command = command;
        }
    }
    if (!isText) return a;
    if (event.message != KeyDown) return a;
    a.swallow = true;
    if (!focused) return a; // not a text box: the key is gone all the same
    a.text = KeyToText(s.vkCode, s.upperCase);
    const QString &t = focused->Text;
    const int start = std::clamp(focused->SelStart, 0, static_cast<int>(t.size()));
    const int length = std::clamp(focused->SelLength, 0, static_cast<int>(t.size()) - start);
    a.write = true;
    a.control.Text = t.left(start) + a.text + t.right(t.size() - start - length);
    a.control.SelStart = start + 1;
    a.control.SelLength = 0;
    return a;
}

ShieldAction WatchKeyProc(const KeyEvent &event) {
    ShieldAction a;
    if (event.code == 0 && isKeyboardMessage(event.message)) {
        state().vkCode = event.vkCode;
        a.armWipe = event.ctrlDown && (event.vkCode == VkX || event.vkCode == VkC);
    }
    return a;
}

void HookAtLoad(WindowHook &window, HookProc proc) {
    window.installed = proc;
}

void TimerHook(WindowHook &window, bool inFront) {
    if (!inFront)
        window.installed = HookProc::None;
    else if (window.installed == HookProc::None)
        window.installed = HookProc::Shield;
}

void HookAtUnload(WindowHook &window) {
    window.installed = HookProc::None;
}

std::array<quint8, BurstKeyCount> BurstKeys() {
    std::array<quint8, BurstKeyCount> k{};
    const auto fill = [&k](int from, int to, int offset) {
        for (int i = from; i <= to; ++i)
            k[static_cast<std::size_t>(i)] = static_cast<quint8>(i + offset);
    };
    fill(0, 25, 65);    // A-Z, drawn with Shift
    fill(26, 35, 22);   // 0-9, drawn with Shift
    fill(36, 61, 29);   // A-Z
    fill(62, 62, -30);  // space
    fill(63, 72, -15);  // 0-9
    fill(73, 77, 114);  // punctuation 187-191
    fill(78, 103, -13); // A-Z
    fill(104, 104, -72);
    fill(105, 130, -40);
    for (int i = 131; i < BurstKeyCount; ++i)
        k[static_cast<std::size_t>(i)] = VkSpace;
    return k;
}

QList<BurstKey> DrawBurst() {
    const auto keys = BurstKeys();
    const int n = static_cast<int>(km::Rnd() * 8) + 2;
    QList<BurstKey> burst;
    for (int i = 0; i < n; ++i) {
        const int idx = static_cast<int>(km::Rnd() * BurstDrawRange);
        burst.append(BurstKey{keys[static_cast<std::size_t>(idx)], idx < BurstShiftedBelow});
    }
    return burst;
}

int WindowsVersion(int platformId, int major, int minor) {
    if (platformId == 1) {
        if (minor == 0) return 1;
        if (minor == 10) return 2;
        if (minor == 90) return 3;
    } else if (platformId == 2) {
        if (major == 3) return 4;
        if (major == 4) return 5;
        if (major == 5) return minor == 0 ? 6 : 7;
    }
    return 0;
}

int HookedControlReply(int message, int notifyCode) {
    // The header's begin-track and divider double click: the columns keep their
    // widths. The context menu: the system's Cut, Copy and Paste stay away from
    // the field, so a secret leaves only through the program's own commands,
    // which arm the clipboard wipe.
    struct Rule {
        int message;
        bool anyCode;
        int notifyCode;
    };
    static constexpr Rule rules[] = {
        {Notify, false, HeaderBeginTrack},
        {Notify, false, HeaderDividerDblClick},
        {ContextMenu, true, 0},
    };
    for (const Rule &r : rules)
        if (r.message == message && (r.anyCode || r.notifyCode == notifyCode)) return 1;
    return -1;
}

} // namespace SHIELD
