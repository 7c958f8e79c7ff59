// Ids of the panel's dialogs, menus and controls: shared by the .rc file and the code.
#pragma once

#define IDD_CONTROL 101
#define IDM_CONTROL 101
#define IDD_ABOUT 201

// Control window.
#define IDC_MENU_LINE 103
#define IDC_THREAD_BANNER 104
#define IDC_CONTEXT_BANNER 105
#define IDC_LAST_CALL 106
#define IDC_STATUS 107
#define IDC_HALT 108
#define IDC_CONTINUE 109
#define IDC_STEP 110
#define IDC_SKIP 111
#define IDC_LEFT_FRAME 112
#define IDC_RIGHT_FRAME 113
#define IDC_GL_ERRORS 114
#define IDC_CONTROL_DRAWING 115
#define IDC_HISTORY 116
#define IDC_TRACE_SETUP 117
#define IDC_BREAK_ON_CALLS 118
#define IDC_BREAK_SETUP 119
#define IDC_BREAK_ON_SWAP 120
#define IDC_SKIP_CALLS 121
#define IDC_SKIP_SETUP 122

// Menu 101.
#define IDM_ABOUT 1
#define IDM_SAVE_CONFIGURATION 2
#define IDM_LOAD_CONFIGURATION 3
#define IDM_QUIT 4
#define IDM_CALL_COUNT 5
#define IDM_CALL_HISTORY 6
#define IDM_DISPLAY_LIST 7
#define IDM_PRIMITIVE_COUNT 8
#define IDM_STATE 9
#define IDM_WINDOW 10
#define IDM_ENUMERANTS 11
#define IDM_ABOUT_QUONDALE 40015

// About box.
#define IDC_ABOUT_VERSION 202
#define IDC_ABOUT_MAJOR 203
#define IDC_ABOUT_CONFIGURATION 204
#define IDC_ABOUT_BUG_FIX 205
#define IDC_ABOUT_CLOSE 206
