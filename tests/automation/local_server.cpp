// SPDX-License-Identifier: Apache-2.0
//
// The scripted application as a process of its own, for Windows, which the system starts when a
// client asks for the class, one process for each object. What it has seen it writes to
// server-<process>.log in the folder that is its first argument when it ends.
#include <fstream>
#include <string>

#include "foundation/automation/dispatch_object.h"
#include "tests/automation/scripted_application.h"

namespace {

using namespace foundation::automation;

scripted::Script* script = nullptr;

/// How long the user of a visible application stays.
constexpr UINT kUserStays_ms = 2000;

/// The books that clients may open: each shows one thing.
void add_books(scripted::Script& world) {
    const auto add = [&](const char16_t* name) {
        const auto book = world.add_file(std::u16string(u"C:\\") + name, {u"Data", u"More"});
        scripted::SheetModel& sheet = *book->sheets[0];
        for (int row = 0; row < 200; ++row)
            for (int column = 0; column < 5; ++column)
                sheet.at(row, column).value = Variant::number(row + column / 10.0);
        sheet.at(0, 1).value = Variant::text(u"caf\u00e9");
        sheet.at(1, 1).value = Variant::boolean(true);
        sheet.at(2, 1).value = Variant::date(45352.5);
        return book;
    };
    add(u"plain.xlsx");
    add(u"busy.xlsx")->busy_reads = 3;
    const auto filtered = add(u"filtered.xlsx");
    filtered->sheets[0]->filter = scripted::FilterModel{{0, 0, 199, 4}, {}};
    filtered->sheets[0]->filter->columns[2].first = Variant::text(u">1");
    add(u"shown.xlsx")->on_open = [&world] {
        world.applications[0]->visible = true;
        SetTimer(nullptr, 0, kUserStays_ms, nullptr);
    };
    add(u"rejects.xlsx")->on_open = [&world] {
        world.refused["Workbook.SaveAs"] = RPC_E_CALL_REJECTED;
    };
    add(u"dies.xlsx")->on_open = [&world] {
        world.before_call = [](const std::string& call) {
            if (call == "Range.Value get") TerminateProcess(GetCurrentProcess(), 9);
        };
    };
}

} // namespace

int wmain(int count, wchar_t** arguments) {
    const std::wstring folder = count > 1 ? arguments[1] : L".";
    const std::wstring log =
        folder + L"\\server-" + std::to_wstring(GetCurrentProcessId()) + L".log";
    const DWORD thread = GetCurrentThreadId();

    scripted::Script world;
    script = &world;
    world.is_remote = true;
    add_books(world);
    world.before_call = [thread](const std::string& call) {
        if (call == "Application.Quit call") PostThreadMessageW(thread, WM_QUIT, 0, 0);
    };
    if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return 2;
    MSG message;
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
    const auto factory =
        ComPtr<IClassFactory>::adopt(new DispatchClass([] { return script->start_application(); }));
    DWORD cookie = 0;
    if (FAILED(CoRegisterClassObject(kSpreadsheetApplication, factory.get(), CLSCTX_LOCAL_SERVER,
                                     REGCLS_SINGLEUSE, &cookie)))
        return 3;
    bool is_left_by_user = false;
    while (!is_left_by_user && GetMessageW(&message, nullptr, 0, 0) > 0) {
        is_left_by_user = message.message == WM_TIMER;
        DispatchMessageW(&message);
    }
    std::ofstream out(std::string(log.begin(), log.end()));
    for (const std::string& violation : world.violations)
        out << "violation: " << violation << '\n';
    out << (is_left_by_user ? "left by its user" : "quit") << " after " << world.calls.size()
        << " calls\nend\n";
    CoRevokeClassObject(cookie);
    CoUninitialize();
    return 0;
}
