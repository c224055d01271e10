#pragma once

// Connects the controller with the toolkit side of the plug-in: the popup window it creates on its
// first idle tick, the keyboard its idle hook polls, and the icons of the status script. The plug-in
// binds them when it is loaded; the host library itself never links the toolkit.
void BindPopupWindow();
