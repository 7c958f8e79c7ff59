// Ids of the panel's dialogs, menus and controls: shared by the .rc file and the code.
#pragma once

// How a control follows the client area of a resizable dialog. The rules of a dialog are its
// RCDATA of the dialog's own id: three numbers a control (its id, its rule, and the control a
// FILL_ABOVE reaches down to), ending in a 0, run in order. Each control keeps its own size,
// left or top where its rule does not move them.
#define LAYOUT_STRETCH_OVER 1        // right edge at the right edge: the etched line under a menu
#define LAYOUT_STRETCH_RIGHT 2       // right edge 4 from the right
#define LAYOUT_FILL_ABOVE 3          // right edge 4 from the right, bottom 4 above the control named
#define LAYOUT_BOTTOM_LEFT 4         // bottom 4 above the bottom
#define LAYOUT_BOTTOM_CENTRE 5       // centred, bottom 4 above the bottom
#define LAYOUT_BOTTOM_END 6          // right edge 8 from the right, bottom 4 above the bottom
#define LAYOUT_BOTTOM_FIRST_THIRD 7  // the two middle buttons of a row of four alike: a third and
#define LAYOUT_BOTTOM_SECOND_THIRD 8 // two thirds across the room beside the outer two

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

// Call Count: dialog and menu 301.
#define IDD_CALL_COUNT 301
#define IDM_CALL_COUNT_MENU 301
#define IDC_CALL_COUNT_LINE 303
#define IDC_CALL_COUNT_SEARCH 304
#define IDC_CALL_COUNT_TEXT 305
#define IDC_CALL_COUNT_LIST 306
#define IDC_CALL_COUNT_CLEAR 307
#define IDC_CALL_COUNT_SAVE 308
#define IDC_CALL_COUNT_CLOSE 309
#define IDM_NON_ZERO_CALLS 1

// Primitive Count.
#define IDD_PRIM_COUNT 1101
#define IDC_PRIM_COUNT_TEXT 1102
#define IDC_PRIM_COUNT_CLEAR 1103
#define IDC_PRIM_COUNT_SAVE 1104
#define IDC_PRIM_COUNT_CLOSE 1105

// Call History: the context list (901) and one history window per context (801).
// Select State (dialog and menu 1501) and the State window of a row (1601).
#define IDD_STATE_SELECT 1501
#define IDM_STATE_MENU 1501
#define IDC_STATE_LINE 1503
#define IDC_STATE_SEARCH 1504
#define IDC_STATE_SEARCH_TEXT 1505
#define IDC_STATE_LIST 1506
#define IDC_STATE_SNAPSHOT 1507
#define IDC_STATE_SAVE 1508
#define IDC_STATE_CLOSE 1509
#define IDM_NON_DEFAULT_STATE 1
#define IDM_DIFF_FROM_SNAPSHOT 2
#define IDD_STATE_VALUE 1601
#define IDC_STATE_CURRENT_LABEL 1602
#define IDC_STATE_SNAPSHOT_LABEL 1603
#define IDC_STATE_DEFAULT_LABEL 1604
#define IDC_STATE_NAME 1605
#define IDC_STATE_CURRENT 1606
#define IDC_STATE_SNAPSHOT_TEXT 1607
#define IDC_STATE_DEFAULT 1608
#define IDC_STATE_VALUE_CLOSE 1609

// Window Information.
#define IDD_WINDOW_INFO 1701
#define IDC_WINDOW_INFO_TEXT 1702
#define IDC_WINDOW_INFO_SAVE 1703
#define IDC_WINDOW_INFO_CLOSE 1704

// Enumerates: the reference of enumerant names and numbers.
#define IDD_ENUMERANTS 701
#define IDC_ENUM_SEARCH 702
#define IDC_ENUM_TEXT 703
#define IDC_ENUM_LIST 704
#define IDC_ENUM_CLOSE 705

// Display lists: Select GL Context (501), Select Display List (601), Display List (401).
#define IDD_LIST_CONTEXT 501
#define IDC_LIST_CONTEXT_LIST 502
#define IDC_LIST_CONTEXT_CLOSE 503
#define IDD_LIST_SELECT 601
#define IDC_LIST_SELECT_LIST 602
#define IDC_LIST_SELECT_CLOSE 603
#define IDD_LIST 401
#define IDC_LIST_HEAD 402
#define IDC_LIST_SEARCH 403
#define IDC_LIST_SEARCH_TEXT 404
#define IDC_LIST_TEXT 405
#define IDC_LIST_SAVE 406
#define IDC_LIST_CLOSE 407

#define IDD_HISTORY_SELECT 901
#define IDC_HISTORY_SELECT_LIST 902
#define IDC_HISTORY_SELECT_CLOSE 903
#define IDD_HISTORY 801
#define IDC_HISTORY_SEARCH 802
#define IDC_HISTORY_SEARCH_TEXT 803
#define IDC_HISTORY_TEXT 804
#define IDC_HISTORY_CLEAR 805
#define IDC_HISTORY_SAVE 806
#define IDC_HISTORY_CLOSE 807

// The three selection dialogs of one layout: the ids are their base (1200 Break, 1300 Trace,
// 1400 Skip) plus these offsets; each has a menu of its own id.
#define IDD_BREAK_SELECT 1201
#define IDD_TRACE_SELECT 1301
#define IDD_SKIP_SELECT 1401
#define SELECT_LINE 3
#define SELECT_SEARCH 4
#define SELECT_SEARCH_TEXT 5
#define SELECT_LIST 6
#define SELECT_ALL 7
#define SELECT_NONE 8
#define SELECT_OK 9
#define SELECT_CANCEL 10
// Menu "Sets": remember and recall three sets; menu "Options" of the trace dialog.
#define IDM_REMEMBER_SET_1 1
#define IDM_REMEMBER_SET_2 2
#define IDM_REMEMBER_SET_3 3
#define IDM_RECALL_SET_1 4
#define IDM_RECALL_SET_2 5
#define IDM_RECALL_SET_3 6
#define IDM_SHOW_PROBLEMS 7
#define IDM_SHOW_HINTS 8
#define IDM_LIMIT_DATA_DUMPS 9
#define IDM_SHOW_DATA_ADDRESS 10
#define IDM_CAPTURE_VERTEX_ARRAYS 11
