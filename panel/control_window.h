// Window functions of the control window (dialog 101) and the About box (dialog 201).
#pragma once

#include <windows.h>

INT_PTR CALLBACK control_window_function(HWND dialog, UINT message, WPARAM first, LPARAM second);
INT_PTR CALLBACK about_window_function(HWND dialog, UINT message, WPARAM first, LPARAM second);
