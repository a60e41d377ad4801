// The module's main window: a panel inside the host's window holding the
// source side of the file manager (path box, Up and Refresh buttons, the
// directory tree beside the file list) and the Help, Copy and Exit buttons.
#pragma once

#include <wx/bitmap.h>
#include <wx/button.h>
#include <wx/panel.h>
#include <wx/splitter.h>
#include <wx/statbox.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/weakref.h>

#include "common/TabCycle.h"
#include "dialogs/Properties_dialog.h"
#include "dialogs/my_log_dialog.h"
#include "destination/Des_Panel.h"

class my_listctrl;
class my_DirTreeCtrl;
class keln_BitmapButton;
class HelpDia;

// Window and command ids of the frame.
enum {
  ID_MYFRAME_HELP = 3002,
  ID_MYFRAME_COPY = 3003,
  ID_MYFRAME_UP = 3004,
  ID_MYFRAME_REFRESH = 3005,
  ID_MYFRAME_EXIT = 3006,
  ID_MYFRAME_EXIT2 = 3008,
  ID_MYFRAME_MENU = 3009,
  ID_MYFRAME_MENU_HELP = 3010,
  ID_MYFRAME_MENU_ABOUT = 3011,
  ID_MYFRAME_UPDATE_UI = 10003,
};

// Where the small Help/About menu opens: 25 pixels below the anchor control's
// position, or below (0, 0) when there is no anchor.
wxPoint MenuPopupPoint(const wxWindow* anchor);

class my_frame : public wxPanel {
 public:
  my_frame(wxWindow* parent, int id, const wxString& title, const wxPoint& pos,
           const wxSize& size, long style);
  ~my_frame() override;

  // The keyboard goes to the source pane the user worked in last: the tree
  // when it had the focus last, else the list.
  void SetFocus() override;

  void OnPaint(wxPaintEvent& event);
  void OnChar(wxKeyEvent& event);
  void OnKeyDown(wxKeyEvent& event);
  void OnKeyUp(wxKeyEvent& event);
  // Tab and Shift+Tab move along the frame's keyboard cycle; F5 refreshes.
  void OnCharHook(wxKeyEvent& event);
  void OnMouseMove(wxMouseEvent& event);
  void OnLeftDown(wxMouseEvent& event);
  void OnLeftUp(wxMouseEvent& event);
  void OnMouseCaptureLost(wxMouseCaptureLostEvent& event);
  void OnButtonUp(wxCommandEvent& event);
  void OnButtonCopy(wxCommandEvent& event);
  void OnButtonHelp(wxCommandEvent& event);
  void OnRefresh(wxCommandEvent& event);
  void OnExit(wxCommandEvent& event);
  void OnMinimize(wxCommandEvent& event);
  void OnProcessCustom(wxCommandEvent& event);
  void OnHelp(wxCommandEvent& event);
  void OnAbout(wxCommandEvent& event);
  void OnUpdateUi(wxUpdateUIEvent& event);
  void OnWindowCreate(wxWindowCreateEvent& event);
  void OnCloseAll(wxCloseEvent& event);
  void SetWindowShape();
  void imageLoad(wxBitmap& out, wxString path, int type);

  // Counts folders, files and bytes below path into the open properties
  // dialog; 10 when the count was stopped, 1 otherwise.
  int count_DirFileInfo(wxString path);

  // Resolves the copy source into g_Des_PathInfo (the selected names, the
  // source folder, the destination folder of a tree source), asks before
  // replacing files or merging into folders of the destination and creates
  // the destination folders of selected folders. 0 to go on with the copy,
  // -1 to abandon it.
  int GetSourcePath();

  // The folder that command code 1401 shows (the copy command fills it).
  void SetTargetPath(const wxString& path) { m_targetPath = path; }
  const wxString& GetTargetPath() const { return m_targetPath; }

  // The frame's controls, for the windows that work with it.
  my_listctrl* GetListCtrl() const { return list; }
  my_DirTreeCtrl* GetTreeCtrl() const { return tree; }
  keln_BitmapButton* GetUpButton() const { return m_upButton; }
  keln_BitmapButton* GetRefreshButton() const { return m_refreshButton; }
  wxButton* GetHelpButton() const { return m_helpButton; }
  wxButton* GetCopyButton() const { return m_copyButton; }
  wxButton* GetExitButton() const { return m_exitButton; }
  wxTextCtrl* GetPathBox() const { return m_pathText; }
  wxSplitterWindow* GetSplitter() const { return m_splitter; }
  wxPanel* GetInnerPanel() const { return m_innerPanel; }
  HelpDia* GetHelpDia() const { return m_helpDia; }
  // The open properties dialog, or null (also once it has been destroyed).
  Properties_dialog* GetPropertiesDialog() const { return m_propertiesDialog.get(); }
  // The destination panel of the running copy command; null once it is gone.
  Des_Panel* GetDesPanel() const { return m_desPanel.get(); }
  wxWindow* GetMenuAnchor() const { return m_menuAnchor; }
  // The report window of the last copy with problems, or null once it is closed.
  my_log_dialog* GetReportDialog() const { return m_reportDialog.get(); }

  // The report window shows at most this many lines (standard output gets all).
  static const size_t kCopyReportWindowLines = 5000;

 private:
  void ShowProperties(int code);
  // At the end: flushes every volume, unmounts them, and detaches those still
  // in use lazily so nothing stays under /mnt; with tell, a message names
  // them first. Runs once.
  void ReleaseVolumes(bool tell);
  // Stops a running copy (its partial file removed) and a running count.
  void StopRunningWork();
  void OnTopLevelClose(wxCloseEvent& event);
  // Opens the report of the last copy when it has problems not yet reported.
  void ShowCopyReport();

  my_listctrl* list;
  my_DirTreeCtrl* tree;
  wxStaticBox* m_sourceBox;
  keln_BitmapButton* m_upButton;
  keln_BitmapButton* m_refreshButton;
  wxButton* m_helpButton;
  wxButton* m_copyButton;
  wxButton* m_exitButton;
  // The top-level window whose closing ends the module (null when none).
  wxWindow* m_topLevel = nullptr;
  bool m_volumesReleased = false;
  wxWeakRef<Properties_dialog> m_propertiesDialog;
  wxWeakRef<Des_Panel> m_desPanel;
  wxWeakRef<my_log_dialog> m_reportDialog;
  // Tab order: tree, list, path box, Help, Copy, Exit (Up and Refresh are
  // Backspace and F5 from the keyboard).
  common::TabCycle m_tabCycle;
  wxWindow* m_menuAnchor;
  wxTextCtrl* m_pathText;
  wxString m_targetPath;
  wxPoint m_dragOffset;
  bool m_dragAllowed;

  wxPanel* m_innerPanel;
  wxSplitterWindow* m_splitter;
  HelpDia* m_helpDia;

  DECLARE_EVENT_TABLE()
};
