// The module's own command event: the lists and the tree post it with a
// command code as the event id, and the main frame dispatches on the code.
#pragma once

#include <wx/event.h>

extern const wxEventType wxEVT_MY_CUSTOM_COMMAND;

// Command codes carried in the event id. The tree's and the list's context
// menus use the same numbers as their menu item ids.
enum {
  MYCMD_TREE_COPY = 400,
  MYCMD_TREE_ABOUT = 401,       // the tree's About entry (no menu item carries it)
  MYCMD_TREE_SELECT_ALL = 402,  // the tree's "&Select All...", always disabled
  MYCMD_TREE_PROPERTIES = 403,
  MYCMD_TREE_DISABLE_COPY = 404,
  MYCMD_TREE_ENABLE_COPY = 405,
  MYCMD_LIST_COPY = 420,
  MYCMD_LIST_ABOUT = 421,  // the list's About entry (no menu item carries it)
  MYCMD_LIST_SELECT_ALL = 422,
  MYCMD_LIST_PROPERTIES = 423,
  MYCMD_LIST_DISABLE_COPY = 424,
  MYCMD_LIST_ENABLE_COPY = 425,
  MYCMD_OPEN_TARGET = 1401,
};

// Posts a command event with the given code to the window's event handler.
void PostMyCustomCommand(wxWindow* target, int code);
