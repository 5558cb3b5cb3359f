#include "ui/LanguageUS.h"

#include <algorithm>
#include <iterator>

#include "platform/Random.h"

namespace LanguageUS {

namespace {

// The maker's site, quoted where the program sends the person for an update.
#define MakerWebAddress "www.tavernholt.example"

struct Row {
    int row;
    const char *text;
};

// Rows in ascending order of their numbers. Line breaks are "\r\n"; rows that
// begin or end with a blank are pieces that callers join with values.
// clang-format off
constexpr Row Rows[] = {
    {1, "No database specified."},
    {7, "Confirm deletion of the appointment"},
    {8, "Palm Datebook imported successfully."},
    {9, "File import aborted!"},
    {10, "At least one weekday has to be selected!"},
    {11, "ID conflict! Treat as new appointment?"},
    {12, "Must be valid number"},
    {13, "Out of range (1-255)"},
    {14, "Confirm deletion of"},
    {15, "Either LAST NAME, FIRST NAME or COMPANY have to be specified. Alternatively DELETE record or leave unchanged (ESC)!"},
    {16, "Update impossible"},
    {17, "Palm Address File imported successfully."},
    {18, "Select item"},
    {19, "Confirm deletion of category. All items will be transferred to the UNFILED category."},
    {20, "Discard changes?"},
    {21, "No valid amount"},
    {22, "Amount = 0! Accept?"},
    {23, "Task already completed. Due Date cannot be changed."},
    {24, "Date in the past!"},
    {25, "Confirm deletion of Item:"},
    {26, "Store record?"},
    {27, "Confirm deletion of memo:"},
    {28, "Palm Memopads imported successfully."},
    {29, "Confirm deletion of task:"},
    {30, "Palm Todo List imported successfully."},
    {31, "No record found"},
    {32, "Conversion error (binary to string)!"},
    {33, "Irregular Binary String"},
    {34, "No Valid Key"},
    {35, "Fatal error: Wrong Password"},
    {36, "Fatal error: Key too short"},
    {37, "Too many attempts. The program will be closed."},
    {38, "Password (minimum 8 Characters):"},
    {39, "Request Password"},
    {40, "Passphrase too short (minimum 8 char)!"},
    {41, "Retype Password"},
    {42, "Confirm passphrase:"},
    {43, "Input Error"},
    {44, "Keystring error! Contact the software provider. The program will be closed"},
    {45, "No password entered."},
    {46, "DB not usable (Error 103): no keystring."},
    {47, "Fatal Error: No Keystring."},
    {48, "Fatal Error: Wrong keystring!"},
    {49, "Please insert a date in this field."},
    {50, "Filename must be"},
    {51, "File format not recognized."},
    {52, "No free category ID number!"},
    {53, "Address"},
    {54, "Phone"},
    {55, "Email"},
    {56, "Home"},
    {57, "Business"},
    {58, "Work"},
    {59, "Other"},
    {60, "Fax"},
    {61, "Web"},
    {62, "Website"},
    {63, "Biz"},
    {64, "Pager"},
    {65, "Main"},
    {66, "Unfiled"},
    {67, "Mobile"},
    {68, "Note"},
    {69, "M"},
    {70, "F"},
    {71, "H"},
    {72, "W"},
    {73, "E"},
    {75, "Gov. ID"},
    {76, "Spouse"},
    {77, "Children"},
    {78, "Birthday"},
    {79, "Confirm deletion of record:"},
    {80, "Confirm deletion of ALL records!"},
    {81, "Are you sure?"},
    {82, "Confirm deletion of all completed tasks"},
    {83, "Fatal Error #"},
    {84, "Error!"},
    {85, "Password not correct!"},
    {86, "Not a valid .KMD-File"},
    {87, "All Files"},
    {88, "Open"},
    {89, "Enter name of new database"},
    {90, "No valid password!"},
    {94, "The database has been modified by a more recent software version of Kestrelmondarin. Access denied. Please, download the update from " MakerWebAddress "."},
    {95, "Opening Database aborted. The program will be closed."},
    {96, "Crucial system data missing. Database (.KMD file) cannot be opened, nor automatically repaired. Exiting program."},
    {97, "Opening database unsuccessful."},
    {98, "Passphrase input aborted. Program will be closed."},
    {99, "New Passphrase (minimum 8 characters):"},
    {100, "Select item!"},
    {101, "Error 101: Invalid item! Cannot be changed."},
    {102, "Confirm deletion of ALL records in this CATEGORY!"},
    {103, "Error encountered during import procedure."},
    {104, "records imported."},
    {111, " items found"},
    {112, "Address"},
    {113, "Calendar"},
    {114, "Diary"},
    {115, "Memo"},
    {116, "Todo"},
    {117, "Confidential"},
    {118, "Budget 1"},
    {119, "Budget 2"},
    {120, "Budget 3"},
    {121, "Budget"},
    {122, "Due"},
    {123, "Completed"},
    {124, "Passphrase left unchanged."},
    {125, "PIN not correct!"},
    {126, "Enter PIN:"},
    {127, "Outlook containes no contacts (addresses)."},
    {128, "Outlook not installed."},
    {129, "Wrong file version."},
    {130, "File already compressed."},
    {131, "File not compressed or compression format not recognized."},
    {132, "Choose a Backup Folder"},
    {133, "Zero length file."},
    {134, "File not found (incorrect path)."},
    {135, "Program already running on this machine."},
    {136, "Compressed backup file created:"},
    {137, "Backup failed."},
    {138, "Original .kmd file in destination folder will be saved as .kmb file and replaced with restored file from backup-folder. Accept changes?"},
    {139, "Confirm cancelling file restoring procedure."},
    {140, "Access to the restored database requires entering passphrase again."},
    {141, "Open restored file?"},
    {142, "User login:"},
    {143, "Private records are hidden."},
    {144, "Select a folder:"},
    {145, "Confirm deletion of file?"},
    {146, "The database has been created successfully. Now you will have to login and enter your password once again."},
    {147, "Choose folder to restore file to:"},
    {149, "Lower range limit for dates is"},
    {150, "Upper range limit for dates is"},
    {151, "No date fullfilling criteria available after start date this month. The start date will be anticipated or moved to next month. Starting with next month?"},
    {152, "All appointments until"},
    {153, "will be deleted from the main database (.KMD file)."},
    {154, "Unknown error while creating new Archive file."},
    {155, "Import error"},
    {156, "Outlook contacts imported successfully!"},
    {158, "Weak passphrase:\r\nPassphrase should be mixed case, with at least one digit or punctuation character. Accept anyway?"},
    {159, "Enter Passphrase"},
    {160, "Kestrelmondarin creates an empty database to store all encrypted data. The file gets the extension \".kmd\".\r\n\r\n-  By clicking YES, you accept the default path:\r\n       \"My Documents\\Kestrelmondarin\\Personaldata.kmd\"\r\n\r\n-  By clicking NO, you will be asked to specify a custom path and filename."},
    {161, "Select a file!"},
    {162, "The deleted events will be archived in the archive file (.KMA file)."},
    {163, "Confirm deletion of all events before and including"},
    {164, "No correct email address!"},
    {165, "No phone number entered!"},
    {166, "Database repaired and compacted!"},
    {167, "Help File not found!"},
    {169, "records found. Start importing?"},
    {170, "File contains no records."},
    {171, "in folder"},
};

// Each tip is a section word in capitals, ":" and the text.
constexpr const char *Tips[TipCount] = {
    "CALENDAR: You can switch between different calendar views by pressing CTRL and type F1 for 1-day view, F2 for 5-day (workday) view,  F3 for week view and F4 for month view. You can also use the toolbar buttons or the Calendar menu.",
    "CALENDAR: Switch between todo list and contact list by clicking on the T/C buttons. The contact list contains all names filed in the address book, the todo list all tasks not yet completed.",
    "CALENDAR: Tasks and contacts (listed in the lower right corner) can be listed by categories.",
    "CALENDAR: You can edit an event by right-clicking on it and selecting \"EDIT\" from the popup menu.",
    "CALENDAR: You can quickly create a new event by double-clicking on the time-slot in the event pane.",
    "CALENDAR: You can easily reschedule an appointment by dragging it  to another day or time. Note: recurring events cannot by dragged to another day, but can be rescheduled to another time the same day (all recurrences will be affected).",
    "CALENDAR: You can quickly increase or decrease the duration of an appointment by left-clicking and dragging its lower edge (end time) up or down.",
    "CALENDAR: A quick way to create a timed event related to a task listed in your todo list: remember that the todo items yet to complete are listed also in the calendar section. Left click and drag the selected task with the mouse to the desired date/time slot in the event pane.",
    "CALENDAR: A quick way to create a timed or all-day event related to a contact filed in your address book: visualize the contact list in the calendar section by clicking the \"C\" button. Left click and drag the selected contact with the mouse to the desired date/time slot in the event pane.",
    "BACKUP: You should create regular backups (menu: Tools -> Backup). Backup files are zipped to minimize storage space.",
    "BACKUP: Backup files carry a time stamp in their name: b041224170455.kmd means Dec 24, 2004 at 5:04:55 pm. It enables you to select the last working database with the Restore procedure in case your database gets damaged.",
    "BACKUP: While running the backup procedure, the active database is compacted BEFORE creating the backup file. This recovers space after deleted records and optimizes the usage of the database.",
    "COMPACT DATABASE: If you do not backup your database periodically, it should be compacted on a regular basis (e.g. weekly) in order to reduce its size and optimize access. Backing up the database makes this procedure superfluous.",
    "SECURITY: More than 65000 different keys (composed of random characters) are used to encrypt every single piece of information (record field)",
    "SECURITY: You should not key in the master passphrase too fast. Antikeylogging measures slow down recording of keystrokes; very quick typing could result in lost keystrokes (only if using Windows 9x, NT or ME).",
    "SECURITY: If the program is inactive,  the auto-shutdown function will close it after a period of minutes you can define in the preference window (if you set the time to zero, the program will remain open until you close it manually).",
    "BUDGET: In order to view private transactions, you have BOTH to click the \"Show private\" button in the Preferences window for the budget you want use, AND the general \"Show Private Records\" function in the View menu.",
    "SECURITY: You can set a secondary passphrase (PIN) to limit access to entire sections, if you allow another user to have access to the database (e.g. your secretary might be allowed to open the calendar, budget 1 and the address book, but budget 2 is blocked with the PIN).",
    "CALENDAR: You can redefine the default duration for timed events in the Preferences window (15, 20, 30 or 60 minutes)",
    "ADDRESS: You can send an email directly by right-clicking with the mouse on a valid email address in the Address pane and selecting \"Send Email\" from the popup menu (requires an installed default email client like Outlook Express or similar).",
    "ADDRESS: If you have a fax modem installed, you can dial a phone number directly by right-clicking with the mouse on a phone number in the Address pane and select \"Dial\" from the popup menu.",
    "IMPORT: Avoid retyping addresses and appointments by using the import feature in the address and calendar section. Records can be imported from Outlook and Palm Desktop. Select \"Import\" from the Address or Calendar menu. From Palm Desktop, ToDo list and Memopad can also be imported.",
    "TODO: You can change the sorting of the listed tasks by clicking on the column headers. If you click on the \"Task\" header, the sort order follows Completed/Not completed - Due Date - Priority.",
    "ADDRESS: You can open a web-site directly by right-clicking with the mouse on a valid URL in the Address pane and selecting \"Open Website\" from the popup menu (requires an installed Web Browser like Internet Explorer, Netscape or similar).",
    "CONFIDENTIAL DATA: If you copy a stored password (or any other information from your database) to the clipboard for pasting it into another application outside Kestrelmondarin, you must use it within 30 seconds. For security reasons, the content of the clipboard is erased after 30 seconds or when exiting Kestrelmondarin.",
    "SECURITY: You can immediately make disappear from the screen all information marked as private by clicking on the Hide Private Data button on the toolbar. Making it re-appear requires re-entering the master passphrase.",
    "GENERAL: If you delete a category, all items listed under that category will be moved to the \"Unfiled\" category. You can never delete the \"Unfiled\" category.",
};
// clang-format on

#undef MakerWebAddress

static_assert(std::is_sorted(std::begin(Rows), std::end(Rows),
                             [](const Row &a, const Row &b) { return a.row < b.row; }),
              "the lookup needs the rows in ascending order");

} // namespace

QString MessageText(int row) {
    const auto it = std::lower_bound(std::begin(Rows), std::end(Rows), row,
                                     [](const Row &r, int n) { return r.row < n; });
    if (it == std::end(Rows) || it->row != row) return QString();
    return QString::fromLatin1(it->text);
}

QString Tip(int n) {
    if (n < 1 || n > TipCount) return QString();
    return QString::fromLatin1(Tips[n - 1]);
}

QString RandomTip() {
    return Tip(static_cast<int>(km::RndInt(TipCount)) + 1);
}

} // namespace LanguageUS
