// The control window as the user first sees it: title, frame, menu, controls with their
// captions, kinds, places and tab order, the History box checked; and the About box, hidden
// until asked for, hidden again by its Close button and by closing.
#include "tests/wine/harness.h"

#include "panel/resource.h"

struct control_row {
    int id;
    const char *kind; // window class
    const char *caption;
    DWORD style;      // bits that must be set
    RECT units;       // left, top, width, height in dialog units, as in the template
};

// Template order, which is the tab order.
static const control_row control_rows[] = {
    {IDC_MENU_LINE, "Static", "", SS_ETCHEDHORZ, {0, 0, 292, 1}},
    {IDC_THREAD_BANNER, "Edit", "", ES_READONLY, {4, 4, 140, 12}},
    {IDC_CONTEXT_BANNER, "Edit", "", ES_READONLY, {148, 4, 140, 12}},
    {IDC_LAST_CALL, "Edit", "", ES_READONLY | ES_MULTILINE | WS_VSCROLL, {4, 20, 284, 28}},
    {IDC_STATUS, "Edit", "", ES_READONLY, {4, 52, 284, 12}},
    {IDC_HALT, "Button", "Halt", BS_DEFPUSHBUTTON, {8, 68, 60, 16}},
    {IDC_CONTINUE, "Button", "Continue", BS_PUSHBUTTON, {80, 68, 60, 16}},
    {IDC_STEP, "Button", "Step", BS_PUSHBUTTON, {152, 68, 60, 16}},
    {IDC_SKIP, "Button", "Skip", BS_PUSHBUTTON, {224, 68, 60, 16}},
    {IDC_LEFT_FRAME, "Button", "", BS_GROUPBOX, {4, 88, 140, 44}},
    {IDC_RIGHT_FRAME, "Button", "", BS_GROUPBOX, {148, 88, 140, 44}},
    {IDC_GL_ERRORS, "Button", "GL warnings/errors", BS_AUTOCHECKBOX, {8, 92, 76, 8}},
    {IDC_BREAK_ON_SWAP, "Button", "Break on SwapBuffers", BS_AUTOCHECKBOX, {152, 104, 84, 8}},
    {IDC_BREAK_ON_CALLS, "Button", "Break on API calls", BS_AUTOCHECKBOX, {152, 92, 74, 8}},
    {IDC_BREAK_SETUP, "Button", "Setup", BS_PUSHBUTTON, {240, 92, 44, 12}},
    {IDC_HISTORY, "Button", "History", BS_AUTOCHECKBOX, {8, 116, 68, 8}},
    {IDC_TRACE_SETUP, "Button", "Setup", BS_PUSHBUTTON, {96, 116, 44, 12}},
    {IDC_SKIP_CALLS, "Button", "Skip API calls", BS_AUTOCHECKBOX, {152, 116, 59, 8}},
    {IDC_SKIP_SETUP, "Button", "Setup", BS_PUSHBUTTON, {240, 116, 44, 12}},
    {IDC_CONTROL_DRAWING, "Button", "Control drawing", BS_AUTOCHECKBOX, {8, 104, 76, 10}},
};

static std::string rect_text(const RECT &rect)
{
    char text[64];
    snprintf(text, sizeof text, "%ld,%ld,%ld,%ld", rect.left, rect.top, rect.right, rect.bottom);
    return text;
}

// The edit controls' texts come and go with the session; the other captions are fixed.
static std::string control_line(int id, const std::string &kind, const std::string &caption, bool style_ok,
                                const RECT &rect)
{
    std::string shown = kind == "Edit" ? "" : " \"" + caption + "\"";
    return std::to_string(id) + " " + kind + shown + (style_ok ? "" : " wrong style") + " " + rect_text(rect) + "\n";
}

// The controls in z order, which is the template order, as one text; and what it should be.
static void check_controls(HWND dialog)
{
    std::string expected, seen;
    RECT expected_rects[sizeof control_rows / sizeof control_rows[0]];
    int row_at = 0;
    for (const control_row &row : control_rows) {
        // The dialog manager maps place and size each on its own, so the size is rounded alone.
        RECT mapped = row.units;
        MapDialogRect(dialog, &mapped);
        RECT pixels = {mapped.left, mapped.top, mapped.left + mapped.right, mapped.top + mapped.bottom};
        expected += control_line(row.id, row.kind, row.caption, true, pixels);
        expected_rects[row_at++] = pixels;
    }
    for (HWND control = GetWindow(dialog, GW_CHILD); control; control = GetWindow(control, GW_HWNDNEXT)) {
        int id = GetDlgCtrlID(control);
        char kind[64];
        GetClassNameA(control, kind, sizeof kind);
        DWORD style = (DWORD)GetWindowLongA(control, GWL_STYLE);
        DWORD wanted = 0;
        for (const control_row &row : control_rows)
            if (row.id == id)
                wanted = row.style;
        // Button kinds are a number in the low bits, not flags.
        bool style_ok = strcmp(kind, "Button") == 0 ? (style & 0xF) == wanted : (style & wanted) == wanted;
        RECT rect;
        GetWindowRect(control, &rect);
        MapWindowPoints(nullptr, dialog, (POINT *)&rect, 2);
        // The etched line takes the platform's own edge width at its right and bottom.
        if (style_ok && (style & SS_TYPEMASK) == SS_ETCHEDHORZ && id == control_rows[0].id) {
            const RECT &wanted = expected_rects[0];
            if (rect.left == wanted.left && rect.top == wanted.top && abs(rect.right - wanted.right) <= 2 &&
                abs(rect.bottom - wanted.bottom) <= 2)
                rect = wanted;
        }
        seen += control_line(id, kind, control_text(dialog, id), style_ok, rect);
    }
    check(seen == expected, "controls:\n%s\nexpected:\n%s", seen.c_str(), expected.c_str());
}

static std::string menu_text(HMENU menu)
{
    std::string text;
    int count = GetMenuItemCount(menu);
    for (int at = 0; at < count; ++at) {
        char name[128] = "";
        GetMenuStringA(menu, at, name, sizeof name, MF_BYPOSITION);
        HMENU popup = GetSubMenu(menu, at);
        if (popup) {
            text += std::string(name) + ":" + menu_text(popup) + "\n";
            continue;
        }
        UINT id = GetMenuItemID(menu, at);
        UINT state = GetMenuState(menu, at, MF_BYPOSITION);
        // A separator is disabled by nature; an item must not be.
        if (state & MF_SEPARATOR)
            text += " -";
        else if (state & (MF_GRAYED | MF_DISABLED | MF_CHECKED))
            text += " " + std::string(name) + "(state " + std::to_string(state) + ")";
        else
            text += " " + std::string(name) + "=" + std::to_string(id);
    }
    return text;
}

static void check_frame(HWND dialog)
{
    char kind[64];
    GetClassNameA(dialog, kind, sizeof kind);
    check(strcmp(kind, "#32770") == 0, "the control window is a \"%s\", not a dialog", kind);
    LONG style = GetWindowLongA(dialog, GWL_STYLE);
    LONG extended = GetWindowLongA(dialog, GWL_EXSTYLE);
    check((style & WS_CAPTION) == WS_CAPTION && (style & WS_SYSMENU), "no caption or system menu");
    check(!(style & WS_THICKFRAME), "the control window can be resized");
    check(extended & WS_EX_TOPMOST, "the control window is not always on top");
    check(GetParent(dialog) == nullptr && GetWindow(dialog, GW_OWNER) == nullptr, "the control window has an owner");

    RECT client, wanted = {0, 0, 292, 137};
    GetClientRect(dialog, &client);
    MapDialogRect(dialog, &wanted);
    check(client.right == wanted.right && client.bottom == wanted.bottom, "client %s, expected %s",
          rect_text(client).c_str(), rect_text(wanted).c_str());
    // Centred on the screen, give or take the frame and the menu.
    RECT window;
    GetWindowRect(dialog, &window);
    int dx = (window.left + window.right) / 2 - GetSystemMetrics(SM_CXSCREEN) / 2;
    int dy = (window.top + window.bottom) / 2 - GetSystemMetrics(SM_CYSCREEN) / 2;
    check(abs(dx) <= 16 && abs(dy) <= 32, "the control window is %d, %d off the screen's centre", dx, dy);

    std::string menu = menu_text(GetMenu(dialog));
    check(menu == "File: About=1 - Save configuration=2 Load configuration=3 - Quit=4\n"
                  "Information: Call count=5 Call history=6 Display list=7 Primitive count=8 State=9 Window=10\n"
                  "Reference: Enumerants=11\n"
                  "Help: About quondale...=40015\n",
          "menu:\n%s", menu.c_str());
}

static void check_boxes_at_start(HWND dialog)
{
    struct box { int id; const char *name; };
#define BOX(id) {id, #id}
    static const box boxes[] = {BOX(IDC_GL_ERRORS), BOX(IDC_CONTROL_DRAWING), BOX(IDC_HISTORY),
                                BOX(IDC_BREAK_ON_CALLS), BOX(IDC_BREAK_ON_SWAP), BOX(IDC_SKIP_CALLS)};
#undef BOX
    std::string seen;
    for (const box &b : boxes)
        seen += std::string(b.name) + "=" + std::to_string(checked(dialog, b.id)) + "\n";
    check_text("the boxes at start", seen,
               "IDC_GL_ERRORS=0\nIDC_CONTROL_DRAWING=0\nIDC_HISTORY=1\nIDC_BREAK_ON_CALLS=0\n"
               "IDC_BREAK_ON_SWAP=0\nIDC_SKIP_CALLS=0\n");
}

static void check_about(HWND dialog)
{
    check(find_dialog("About quondale", 0, 200) == nullptr, "the About box is shown at start");
    menu(dialog, IDM_ABOUT);
    HWND about = find_dialog("About quondale", 0, 2000);
    if (!about) {
        check(false, "File/About shows no About box");
        return;
    }
    std::string texts;
    for (int id = IDC_ABOUT_VERSION; id <= IDC_ABOUT_CLOSE; ++id)
        texts += control_text(about, id) + "|";
    check(texts == "quondale v2.2.3|First number - Major Version|Second number - Configuration file compatibility|"
                   "Third number - Bug fix record|Close|",
          "About box texts: %s", texts.c_str());
    for (int id = IDC_ABOUT_VERSION; id <= IDC_ABOUT_BUG_FIX; ++id)
        check((GetWindowLongA(GetDlgItem(about, id), GWL_STYLE) & SS_TYPEMASK) == SS_CENTER,
              "About text %d is not centred", id);
    check((GetWindowLongA(GetDlgItem(about, IDC_ABOUT_CLOSE), GWL_STYLE) & 0xF) == BS_DEFPUSHBUTTON, "Close is not the default");
    RECT client, wanted = {0, 0, 168, 81};
    GetClientRect(about, &client);
    MapDialogRect(about, &wanted);
    check(client.right == wanted.right && client.bottom == wanted.bottom, "About client %s, expected %s",
          rect_text(client).c_str(), rect_text(wanted).c_str());

    click(about, IDC_ABOUT_CLOSE);
    check(!IsWindowVisible(about), "Close left the About box on screen");
    menu(dialog, IDM_ABOUT_QUONDALE);
    check(IsWindowVisible(about), "Help/About quondale... shows no About box");
    // Closing only hides it: the same window comes back.
    SendMessageA(about, WM_CLOSE, 0, 0);
    check(IsWindow(about) && !IsWindowVisible(about), "closing the About box did not just hide it");
    menu(dialog, IDM_ABOUT);
    check(find_dialog("About quondale", 0, 2000) == about, "the About box came back as another window");
    click(about, IDC_ABOUT_CLOSE);
}

static void scenario()
{
    HWND dialog = control_window();
    check_frame(dialog);
    check_controls(dialog);
    check_boxes_at_start(dialog);
    check_about(dialog);
    driver_done();
    menu(dialog, IDM_QUIT);
}

static int child()
{
    start_driver(scenario);
    open_gl_window(16, 16);
    glClear(GL_COLOR_BUFFER_BIT);
    wait_for_the_end();
}

int main(int argc, char **argv) { return check_main(argc, argv, "panel_window", child); }
