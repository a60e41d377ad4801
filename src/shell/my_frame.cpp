#include "shell/my_frame.h"

#include <wx/config.h>
#include <wx/filename.h>
#include <wx/dcclient.h>
#include <wx/fileconf.h>
#include <wx/image.h>
#include <wx/menu.h>
#include <wx/msgdlg.h>
#include <wx/utils.h>
#include <wx/weakref.h>
#include <wx/wfstream.h>

#include <cstdio>

#include "browser/L_listctrl.h"
#include "browser/ListingLogic.h"
#include "browser/my_DirTreeCtrl.h"
#include "browser/my_listctrl.h"
#include "common/CustomEvents.h"
#include "common/ImageFiles.h"
#include "common/ResourcePaths.h"
#include "copy/CopyAnswer.h"
#include "copy/CopyOutcome.h"
#include "copy/CopyReport.h"
#include "copy/CopyStart.h"
#include "copy/ReplaceQuestions.h"
#include "copy/copy_dialog.h"
#include "copy/copyfile.h"
#include "copy/my_dialog_gauge.h"
#include "destination/Des_PathInfo.h"
#include "destination/Des_Panel.h"
#include "dialogs/CBusyMsgBox.h"
#include "dialogs/PropertiesCounter.h"
#include "dialogs/my_log_dialog.h"
#include "dialogs/Properties_dialog.h"
#include "disk/View_Disk_Info.h"
#include "display/Conversion.h"
#include "fileops/WalkStatus.h"
#include "display/BusyDrives.h"
#include "help/HelpDia.h"
#include "shell/ModuleLifecycle.h"
#include "help/KelnoraAboutDialog.h"
#include "settings/CCtrlConfig.h"
#include "shell/CAutoDisablewxLogging_frame.h"
#include "widgets/CCtrlGenerate.h"
#include "widgets/keln_BitmapButton.h"

BEGIN_EVENT_TABLE(my_frame, wxPanel)
  EVT_PAINT(my_frame::OnPaint)
  EVT_CHAR(my_frame::OnChar)
  EVT_KEY_DOWN(my_frame::OnKeyDown)
  EVT_KEY_UP(my_frame::OnKeyUp)
  EVT_CHAR_HOOK(my_frame::OnCharHook)
  EVT_MOTION(my_frame::OnMouseMove)
  EVT_LEFT_DOWN(my_frame::OnLeftDown)
  EVT_LEFT_UP(my_frame::OnLeftUp)
  EVT_MOUSE_CAPTURE_LOST(my_frame::OnMouseCaptureLost)
  EVT_BUTTON(ID_MYFRAME_UP, my_frame::OnButtonUp)
  EVT_BUTTON(ID_MYFRAME_COPY, my_frame::OnButtonCopy)
  EVT_BUTTON(ID_MYFRAME_HELP, my_frame::OnButtonHelp)
  EVT_BUTTON(ID_MYFRAME_REFRESH, my_frame::OnRefresh)
  EVT_BUTTON(ID_MYFRAME_EXIT, my_frame::OnExit)
  EVT_BUTTON(ID_MYFRAME_EXIT2, my_frame::OnExit)
  EVT_BUTTON(ID_MYFRAME_MENU, my_frame::OnMinimize)
  EVT_COMMAND(wxID_ANY, wxEVT_MY_CUSTOM_COMMAND, my_frame::OnProcessCustom)
  EVT_MENU(ID_MYFRAME_MENU_HELP, my_frame::OnHelp)
  EVT_MENU(ID_MYFRAME_MENU_ABOUT, my_frame::OnAbout)
  EVT_UPDATE_UI(ID_MYFRAME_UPDATE_UI, my_frame::OnUpdateUi)
  EVT_WINDOW_CREATE(my_frame::OnWindowCreate)
END_EVENT_TABLE()

wxPoint MenuPopupPoint(const wxWindow* anchor) {
  wxPoint pt = anchor ? anchor->GetPosition() : wxPoint(0, 0);
  pt.y += 25;
  return pt;
}

namespace {

wxRect CtrlRect(int index) { return settings::CCtrlConfig::Instance()->GetCtrlInfo(index).GetRect(); }

// Gives a bitmap button the four pictures of resource slots 0-3 of its
// control record: normal, hover, pressed and disabled.
void SetButtonPictures(keln_BitmapButton* button, int index) {
  CONTROLINFO& info = settings::CCtrlConfig::Instance()->GetCtrlInfo(index);
  button->SetBitmap_Normal(info.GetRes(0));
  button->SetBitmap_Hover(info.GetRes(1));
  button->SetBitmap_Select(info.GetRes(2));
  button->SetBitmap_Disabled(info.GetRes(3));
}

// Asks one replacement question with the frame as parent; the dialog stores
// the answer in g_copy_dialog_return and destroys itself.
int AskReplacement(wxWindow* parent, const wxString& title, const wxString& text) {
  copy_dialog* dialog = new copy_dialog(parent, -1, title, wxPoint(250, 230), wxSize(500, 170),
                                        wxDEFAULT_DIALOG_STYLE, 1);
  dialog->SetcopyLableMessage(text);
  dialog->ShowModal();
  return g_copy_dialog_return;
}

// Creates a destination folder with every missing parent; when that fails,
// tells the user and returns false. (0x777 is the permission value folders
// have always been created with; the volumes hold no permissions.)
bool MakeDestinationFolder(const wxString& path) {
  if (wxFileName::Mkdir(path, 0x777, wxPATH_MKDIR_FULL)) return true;
  const int error = wxSysErrorCode();
  wxMessageBox(FolderCreateFailureMessage(error, path), FolderErrorCaption(), wxOK);
  return false;
}

}  // namespace

my_frame::my_frame(wxWindow* parent, int id, const wxString& /*title*/, const wxPoint& pos,
                   const wxSize& size, long style)
    : wxPanel(parent, id, pos, size, style),
      list(nullptr),
      tree(nullptr),
      m_sourceBox(nullptr),
      m_upButton(nullptr),
      m_refreshButton(nullptr),
      m_helpButton(nullptr),
      m_copyButton(nullptr),
      m_exitButton(nullptr),
      m_menuAnchor(nullptr),
      m_pathText(nullptr),
      m_dragAllowed(false),
      m_innerPanel(nullptr),
      m_splitter(nullptr),
      m_helpDia(nullptr) {
  settings::CCtrlConfig::Instance();

  // Hint text on the frame itself.
  wxRect r = CtrlRect(2);
  wxStaticText* hint = new wxStaticText(
      this, wxID_ANY,
      wxGetTranslation("For multi-selection, press Ctrl or Shift while choosing. To select all, "
                       "you can press Ctrl + A. To pop up a menu, you can right-click the file "
                       "list or the tree directory. The drive letter displayed on the interface "
                       "might be inconsistent with those shown in the operating system."),
      r.GetPosition(), r.GetSize(), 0x20);
  // A static text does not break its lines by itself: fit the sentence to
  // the width it was given.
  hint->Wrap(r.GetWidth());

  // Inner panel; every further control is its child.
  r = CtrlRect(3);
  m_innerPanel = new wxPanel(this, wxID_ANY, r.GetPosition(), r.GetSize(),
                             wxBORDER_NONE | wxTAB_TRAVERSAL);
  m_innerPanel->SetBackgroundColour(wxColour(248, 248, 248));

  r = CtrlRect(4);
  m_sourceBox = new wxStaticBox(m_innerPanel, wxID_ANY, wxGetTranslation("Source"),
                                r.GetPosition(), r.GetSize(), 0);

  r = CtrlRect(5);
  wxStaticText* pathLabel = new wxStaticText(m_innerPanel, wxID_ANY, wxGetTranslation("Path"),
                                             r.GetPosition(), r.GetSize(), 0x20);
  pathLabel->SetWindowStyle(pathLabel->GetWindowStyle() | wxALIGN_RIGHT);

  m_pathText = CCtrlGenerate::Crt_wxTextCtrl(m_innerPanel, wxID_ANY,
                                             settings::CCtrlConfig::Instance()->GetCtrlInfo(6));
  m_pathText->SetValue(wxT("c:\\"));
  // Only the tree writes the path box.
  m_pathText->SetEditable(false);

  r = CtrlRect(7);
  m_upButton = new keln_BitmapButton(m_innerPanel, ID_MYFRAME_UP, wxEmptyString,
                                     r.GetPosition(), r.GetSize(), false);
  SetButtonPictures(m_upButton, 7);
  m_upButton->SetToolTip(wxGetTranslation("Up One Level"));

  r = CtrlRect(8);
  m_refreshButton = new keln_BitmapButton(m_innerPanel, ID_MYFRAME_REFRESH, wxEmptyString,
                                          r.GetPosition(), r.GetSize(), false);
  SetButtonPictures(m_refreshButton, 8);
  m_refreshButton->SetToolTip(wxGetTranslation("Refresh"));

  r = CtrlRect(9);
  m_splitter = new wxSplitterWindow(m_innerPanel, wxID_ANY, r.GetPosition(), r.GetSize(),
                                    wxSP_3D, wxT("splitter"));

  // The source tree (directories only, sunken border) beside the source list.
  r = CtrlRect(10);
  tree = new my_DirTreeCtrl(m_splitter, 1002, wxT("D:\\"), r.GetPosition(), r.GetSize(), 0x90,
                            wxEmptyString, 0, wxEmptyString);
  r = CtrlRect(11);
  list = new my_listctrl(m_splitter, 1001, r.GetPosition(), r.GetSize(), wxBORDER_SUNKEN,
                         wxEmptyString);
  m_splitter->SplitVertically(tree, list, 120);
  m_splitter->SetMinimumPaneSize(1);

  r = CtrlRect(12);
  m_helpButton = new wxButton(m_innerPanel, ID_MYFRAME_HELP, wxGetTranslation("&Help"),
                              r.GetPosition(), r.GetSize(), 0);
  r = CtrlRect(13);
  m_copyButton = new wxButton(m_innerPanel, ID_MYFRAME_COPY, wxGetTranslation("&Copy"),
                              r.GetPosition(), r.GetSize(), 0);
  r = CtrlRect(14);
  m_exitButton = new wxButton(m_innerPanel, ID_MYFRAME_EXIT, wxGetTranslation("&Exit"),
                              r.GetPosition(), r.GetSize(), 0);

  // The tree fills the list and the path box; the list keeps the tree in step.
  tree->SetListCtrlPoint(list);
  tree->SetTextCtrlPath(m_pathText);
  list->SetPDirTree(tree);

  for (wxWindow* stop : std::initializer_list<wxWindow*>{tree, list, m_pathText, m_helpButton,
                                                        m_copyButton, m_exitButton})
    m_tabCycle.Add(stop);
  // The keyboard starts in the drive list.
  list->SetFocus();

  m_helpDia = new HelpDia(this, wxID_ANY, wxGetTranslation("Kelnora Help"), wxDefaultPosition,
                          wxDefaultSize, wxCAPTION | wxCLOSE_BOX | wxSYSTEM_MENU,
                          wxGetTranslation("dialogBox"));
  m_helpDia->AddBook(wxFileName(common::ResourcePath(wxT("doc/doc.zip"))));

  // Closing the window the module lives in ends it: the volumes are
  // released first, while a message can still be shown.
  wxWindow* top = wxGetTopLevelParent(this);
  if (top != nullptr && top != this) {
    m_topLevel = top;
    m_topLevel->Bind(wxEVT_CLOSE_WINDOW, &my_frame::OnTopLevelClose, this);
  }
}

void my_frame::StopRunningWork() {
  // A count that is yielding when the frame goes away stops at once; the
  // dialog goes with the frame, and the count sees that it has gone.
  if (m_propertiesDialog) m_propertiesDialog->m_cancel = true;
  // A copy that is yielding stops too, and the file it was copying is closed
  // and its partial copy removed now, before the volumes are unmounted.
  for (wxWindow* child : GetChildren()) {
    my_dialog_gauge* gauge = dynamic_cast<my_dialog_gauge*>(child);
    if (gauge == nullptr) continue;
    gauge->m_cancel = true;
    if (gauge->m_job) gauge->m_job->StopNow();
  }
}

my_frame::~my_frame() {
  StopRunningWork();
  // A frame deleted between a press and its release still holds the mouse.
  if (HasCapture()) ReleaseMouse();
  if (m_topLevel != nullptr && !m_topLevel->IsBeingDeleted())
    m_topLevel->Unbind(wxEVT_CLOSE_WINDOW, &my_frame::OnTopLevelClose, this);
  settings::CCtrlConfig::UnInstance();
  // Unmounts and frees the inventory (UI_FreeMemory), unless the closing of
  // the window or Exit did it already. Not asked from here (no dialog while
  // windows are being deleted); the volumes are flushed and released all
  // the same.
  ReleaseVolumes(false);
}

void my_frame::SetFocus() {
  if (tree->GetIsLastFocus_treectrl())
    tree->SetFocus();
  else
    list->SetFocus();
}

void my_frame::OnPaint(wxPaintEvent& /*event*/) { wxPaintDC dc(this); }

void my_frame::OnChar(wxKeyEvent& event) {
  (void)event.GetKeyCode();
  event.Skip();
}

void my_frame::OnKeyDown(wxKeyEvent& event) { event.Skip(); }

void my_frame::OnKeyUp(wxKeyEvent& event) { event.Skip(); }

void my_frame::OnCharHook(wxKeyEvent& event) {
  if (m_tabCycle.HandleKey(event)) return;
  if (event.GetKeyCode() == WXK_F5 && event.GetModifiers() == wxMOD_NONE) {
    wxCommandEvent click(wxEVT_COMMAND_BUTTON_CLICKED, ID_MYFRAME_REFRESH);
    click.SetEventObject(m_refreshButton);
    wxPostEvent(this, click);
    return;
  }
  event.Skip();
}

// The drag machinery is inert: nothing ever allows dragging, so the frame
// never moves with the mouse.
void my_frame::OnMouseMove(wxMouseEvent& event) {
  if (event.Dragging() && event.LeftIsDown() && m_dragAllowed) {
    Move(ClientToScreen(event.GetPosition()) - m_dragOffset);
  }
}

void my_frame::OnLeftDown(wxMouseEvent& event) {
  if (!HasCapture()) CaptureMouse();
  m_dragOffset = ClientToScreen(event.GetPosition()) - GetPosition();
  if (event.GetX() <= 625 && event.GetY() <= 25) m_dragAllowed = false;
}

void my_frame::OnLeftUp(wxMouseEvent& /*event*/) {
  if (HasCapture()) ReleaseMouse();
  m_dragAllowed = false;
}

// The system took the mouse away (another grab, a window going away) before
// the release: the capture is gone already and must not be released again;
// the press simply ends here.
void my_frame::OnMouseCaptureLost(wxMouseCaptureLostEvent& /*event*/) { m_dragAllowed = false; }

void my_frame::OnButtonUp(wxCommandEvent& event) { list->OnUpList(event); }

void my_frame::OnButtonCopy(wxCommandEvent& /*event*/) {
  wxListCtrl* rows = list->GetListCtrl();
  const long first = rows->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED);
  const CopyStart start =
      CheckCopyStart(rows->GetSelectedItemCount(), list->GetIsLastFocus_listctrl(), first,
                     first >= 0 ? rows->GetItemText(first) : wxString());
  if (start == COPY_START_NO_SELECTION) {
    wxMessageBox(wxGetTranslation("Please select a file or directory!"),
                 wxGetTranslation("Error Selecting File or Folder"), wxOK, this);
    return;
  }
  if (start == COPY_START_DOT_ROW) return;

  // The source folder: the tree's folder or the list's, whichever pane had
  // the focus last.
  if (tree->GetIsLastFocus_treectrl())
    g_Des_PathInfo.m_sourcePath = tree->GetPath();
  else if (list->GetIsLastFocus_listctrl())
    g_Des_PathInfo.m_sourcePath = list->GetCurrentListctrlPath();

  // The destination: the panel leaves its closing button in m_result and
  // destroys itself; it is deleted only once this handler has returned.
  Des_Panel* panel = new Des_Panel(this, -1, wxGetTranslation("Destination"), wxPoint(252, 151),
                                   wxSize(500, 400), wxDEFAULT_DIALOG_STYLE);
  m_desPanel = panel;
  panel->SetBackgroundColour(wxColour(248, 248, 248));
  panel->ShowModal();
  if (g_Des_PathInfo.m_result != DES_RESULT_OK) return;
  const wxString target = m_desPanel ? m_desPanel->GetDestinationPath() : wxString();
  if (target.empty()) {
    // No volume was there to choose: nothing can be copied.
    wxMessageBox(wxGetTranslation("There is no destination drive to copy to."),
                 wxGetTranslation("Destination"), wxOK | wxICON_EXCLAMATION, this);
    return;
  }
  m_targetPath = target;
  g_Des_PathInfo.m_destPath = target + "/";
  if (GetSourcePath() == -1) return;
  // The progress dialog runs the whole copy in its constructor and destroys
  // itself; the host may close the frame during the run, so nothing of the
  // frame is touched after it.
  new my_dialog_gauge(this, -1, wxGetTranslation("Copying Data"), wxPoint(250, 200),
                      wxSize(500, 255), wxDEFAULT_DIALOG_STYLE);
  g_Des_PathInfo.m_result = DES_RESULT_CANCEL;
}

int my_frame::GetSourcePath() {
  const wxString folderQuestion = FolderQuestionFormat();
  const wxString fileQuestion = FileQuestionFormat();
  const wxString folderTitle = wxGetTranslation("Confirmation of Folder Replacement");
  const wxString fileTitle = wxGetTranslation("Confirmation of File Replacement");

  CAutoDisablewxLogging_frame quiet;
  g_Des_PathInfo.m_sourceItems.Clear();
  // A question's modal loop may see the frame go with the host's window.
  wxWeakRef<my_frame> self(this);

  if (tree->GetIsLastFocus_treectrl()) {
    // The tree's folder is copied as a whole into a folder of its name.
    g_Des_PathInfo.m_sourcePath = tree->GetPath();
    wxString name;
    if (!TreeSourceName(g_Des_PathInfo.m_sourcePath, &name)) return 0;
    const wxString candidate = g_Des_PathInfo.m_destPath + name;
    if (wxDirExists(candidate)) {
      const int answer =
          AskReplacement(this, folderTitle, ReplaceQuestionText(folderQuestion, name));
      if (!self || TreeFolderAnswerStep(answer) == REPLACE_ABANDON) return -1;
    }
    if (!MakeDestinationFolder(candidate)) return -1;
    g_Des_PathInfo.m_destPath = candidate;
    return 0;
  }

  if (list->GetIsLastFocus_listctrl()) {
    g_Des_PathInfo.m_sourcePath = list->GetCurrentListctrlPath();
    wxListCtrl* rows = list->GetListCtrl();
    bool yesToAllFiles = false;
    const int count = rows->GetItemCount();
    for (int i = 0; i < count; ++i) {
      if (rows->GetItemState(i, wxLIST_STATE_SELECTED) != wxLIST_STATE_SELECTED) continue;
      const wxString name = rows->GetItemText(i);
      if (listing::IsDotRowText(name)) continue;
      const wxString source = g_Des_PathInfo.m_sourcePath + name;
      const wxString target = g_Des_PathInfo.m_destPath + name;
      ReplaceStep step = REPLACE_COPY;
      if (!wxDirExists(source)) {
        if (AskFileQuestion(wxFileExists(target), yesToAllFiles)) {
          const int answer =
              AskReplacement(this, fileTitle, ReplaceQuestionText(fileQuestion, name));
          if (!self) return -1;
          step = FileAnswerStep(answer, &yesToAllFiles);
        }
      } else if (!wxDirExists(target)) {
        if (!MakeDestinationFolder(target)) return -1;
      } else if (AskFolderQuestion(true, g_copy_dialog_return)) {
        const int answer =
            AskReplacement(this, folderTitle, ReplaceQuestionText(folderQuestion, name));
        if (!self) return -1;
        step = FolderAnswerStep(answer, &g_copy_dialog_return);
      }
      if (step == REPLACE_ABANDON) return -1;
      if (step == REPLACE_COPY) g_Des_PathInfo.m_sourceItems.Add(name);
    }
  }
  return g_Des_PathInfo.m_sourceItems.IsEmpty() ? -1 : 0;
}

void my_frame::OnRefresh(wxCommandEvent& /*event*/) {
  {
    CBusyMsgBox busy(wxGetTranslation("Please wait, working...").wc_str(), this,
                     wxColour(wxT("WHITE")));
    g_AllDiskPartitionInf.UI_FreeMemory();
    g_AllDiskPartitionInf.UI_InitDevice();
    g_AllDiskPartitionInf.GetDiskParttionInfo();
    tree->UpdateMyDirTreeCtrl();
    list->InitParttionList();
    m_copyButton->Disable();
    m_upButton->keln_Disable();
  }
  // Drives in use stayed mounted with their letters: say so, once.
  wxString busy = BusyDrivesText(g_AllDiskPartitionInf.m_Volume,
                                 g_AllDiskPartitionInf.GetCurrentParttionNum(), false);
  if (!busy.empty()) wxMessageBox(busy, wxGetTranslation("Refresh"), wxOK | wxICON_WARNING, this);
}

void my_frame::OnExit(wxCommandEvent& /*event*/) {
  ReleaseVolumes(true);
  Close(false);
  Destroy();
}

void my_frame::OnTopLevelClose(wxCloseEvent& event) {
  // A close that cannot be refused (a signal ending the program) asks
  // nobody: there may be nobody to answer.
  ReleaseVolumes(event.CanVeto());
  event.Skip();
}

void my_frame::ReleaseVolumes(bool tell) {
  if (m_volumesReleased) return;
  m_volumesReleased = true;
  // Our own copy or count must not hold a volume: they stop first.
  StopRunningWork();
  g_AllDiskPartitionInf.UI_Sync();
  g_AllDiskPartitionInf.UI_FreeMemory();
  if (g_AllDiskPartitionInf.BusyVolumeCount() == 0) return;
  wxString text = BusyDrivesText(g_AllDiskPartitionInf.m_Volume,
                                 g_AllDiskPartitionInf.GetCurrentParttionNum(), true);
  std::printf("%s\n", static_cast<const char*>(text.utf8_str()));
  std::fflush(stdout);
  if (tell) wxMessageBox(text, wxGetTranslation("Exit"), wxOK | wxICON_WARNING, this);
  g_volumesLeftInUse += g_AllDiskPartitionInf.UI_DetachBusyVolumes();
}

void my_frame::OnMinimize(wxCommandEvent& /*event*/) {
  wxMenu menu;
  menu.Append(ID_MYFRAME_MENU_HELP, wxGetTranslation("&Help          "));
  menu.AppendSeparator();
  menu.Append(ID_MYFRAME_MENU_ABOUT, wxGetTranslation("&About...         "));
  PopupMenu(&menu, MenuPopupPoint(m_menuAnchor));
}

void my_frame::OnProcessCustom(wxCommandEvent& event) {
  switch (event.GetId()) {
    case MYCMD_TREE_COPY:
    case MYCMD_LIST_COPY:
      OnButtonCopy(event);
      break;
    case MYCMD_TREE_PROPERTIES:
    case MYCMD_LIST_PROPERTIES:
      ShowProperties(event.GetId());
      break;
    case MYCMD_TREE_DISABLE_COPY:
      m_copyButton->Disable();  // the Up button is left as it is
      break;
    case MYCMD_TREE_ENABLE_COPY:
    case MYCMD_LIST_ENABLE_COPY:
      m_copyButton->Enable();
      m_upButton->keln_Enable();
      break;
    case MYCMD_LIST_SELECT_ALL:
      list->ListctrlSelectAll();
      break;
    case MYCMD_LIST_DISABLE_COPY:
      m_copyButton->Disable();
      m_upButton->keln_Disable();
      break;
    case MYCMD_OPEN_TARGET: {
      tree->SetPath(m_targetPath);
      wxString path(m_targetPath);
      list->Copy_Refresh_Filelisttabel(path);
      ShowCopyReport();
      break;
    }
    default:
      break;
  }
}

// After a copy whose outcome holds problems: the report's lines go to
// standard output and into a report window that stays open beside the frame
// (not modal: the frame is usable again at once). Each outcome is reported
// once, so a later 1401 without a new copy opens nothing; a copy without
// problems opens nothing either.
void my_frame::ShowCopyReport() {
  if (!CopyReportDue(g_lastCopyOutcome)) return;
  g_lastCopyOutcome.reported = true;
  const wxArrayString lines = CopyReportLines(g_lastCopyOutcome);
  PrintCopyReport(lines);
  if (m_reportDialog) m_reportDialog->Destroy();  // the report of an earlier copy
  my_log_dialog* dialog = new my_log_dialog(this, wxID_ANY, wxGetTranslation("Copy report"),
                                            wxPoint(200, 160), wxSize(760, 460));
  dialog->m_logText->SetValue(CopyReportText(lines, kCopyReportWindowLines));
  dialog->m_logText->SetInsertionPoint(0);
  m_reportDialog = dialog;
  dialog->Show();
}

int my_frame::count_DirFileInfo(wxString path) {
  return CountDirFileInfo(m_propertiesDialog, path);
}

// Properties of the tree's current folder (403) or of the rows selected in
// the list (423): the dialog opens with the frame disabled and shows the
// counters while the folders are walked; closing it stops the walk. Every
// yield may destroy the dialog, or the frame with everything in it (the host
// window closed): after each one nothing is touched that has gone.
void my_frame::ShowProperties(int code) {
  Properties_dialog* dialog = new Properties_dialog(this, wxID_ANY, wxGetTranslation("Properties"),
                                                    wxPoint(320, 230), wxSize(350, 275),
                                                    wxCAPTION | wxCLOSE_BOX | wxSYSTEM_MENU);
  m_propertiesDialog = dialog;
  wxWeakRef<my_frame> self(this);
  wxWeakRef<Properties_dialog> alive(dialog);
  dialog->SetCounting(true);
  dialog->Show();
  dialog->Update();
  Enable(false);
  dialog->Enable(true);
  wxYieldIfNeeded();
  if (!self || !alive) return;
  dialog->ShowRunningCounts();

  wxString path;
  if (code == MYCMD_TREE_PROPERTIES) {
    path = tree->GetPath();
  } else {
    path = list->GetCurrentListctrlPath();
    if (!path.empty()) path.RemoveLast();
  }
  dialog->SetLocation(Conversion_Path(path, -1));

  int result = kStatusWalked;
  if (code == MYCMD_TREE_PROPERTIES) {
    result = count_DirFileInfo(path);
  } else {
    wxListCtrl* rows = list->GetListCtrl();
    const wxString folder = list->GetCurrentListctrlPath();
    const int count = rows->GetItemCount();
    for (int i = 0; i < count; ++i) {
      if (!(rows->GetItemState(i, wxLIST_STATE_SELECTED) & wxLIST_STATE_SELECTED)) continue;
      result = count_DirFileInfo(folder + rows->GetItemText(i));
      if (!self || result == kStatusStopped) break;
    }
  }
  if (!self || !alive) return;
  dialog->SetCounting(false);
  // Close pressed during the count's last yield: the count may still have
  // ended normally, but the user asked for the dialog to go.
  if (result == kStatusStopped || dialog->m_cancel) {
    dialog->Dismiss();
    return;
  }
  if (result == kStatusWalked || code == MYCMD_TREE_PROPERTIES) {
    dialog->m_status = kStatusFinished;
    wxYieldIfNeeded();
    if (!self || !alive) return;
    dialog->ShowFinalCounts();
  }
  if (code == MYCMD_TREE_PROPERTIES && result != kStatusWalked) dialog->Dismiss();
}

void my_frame::OnHelp(wxCommandEvent& event) { OnButtonHelp(event); }

void my_frame::OnButtonHelp(wxCommandEvent& /*event*/) {
  wxFileInputStream stream(common::SettingsPath(wxT("config.ini")));
  wxFileConfig* config = stream.IsOk() ? new wxFileConfig(stream, wxConvAuto()) : nullptr;
  wxString path, cate, html;
  if (config != nullptr) {
    config->Read(wxT("/help/path"), &path, wxEmptyString);
    config->Read(wxT("/help/cate"), &cate, wxEmptyString);
    config->Read(wxT("/help/html"), &html, wxEmptyString);
  }
  wxString cmd = wxString::Format(wxT("%s \"%s%s\""), path, cate, html);
  // Fixed output: tests read this line.
  std::printf("help_cmd = %s\n", static_cast<const char*>(cmd.utf8_str()));
  std::fflush(stdout);
  wxExecute(cmd, wxEXEC_ASYNC);
  delete config;
}

void my_frame::OnAbout(wxCommandEvent& /*event*/) {
  wxAboutDialogInfo info = KelnoraAboutDialog::GetDefaultInfo();
  info.SetName(wxGetTranslation("Vantori"));

  wxString version = wxT("5678");
  // The version is read relative to the current directory, unlike the help
  // command's settings.
  wxFileInputStream stream(common::WorkingDirSettingsPath(wxT("config.ini")));
  if (stream.IsOk()) {
    wxFileConfig config(stream, wxConvAuto());
    config.Read(wxT("/Interface/version"), &version, wxT("5678"));
  }
  info.SetVersion(wxT("2.0.") + version);
  // The logo is a PNG file: load it as one (the icon's default type would
  // not read it).
  info.SetIcon(wxIcon(common::ResourcePath(wxT("logo.png")), wxBITMAP_TYPE_PNG));

  wxArrayString developers;
  developers.Add(wxT("Mara Lindqvist"));
  developers.Add(wxT("Tobias Renner"));
  info.SetDevelopers(developers);
  wxArrayString writers;
  writers.Add(wxT("Ines Hartmann"));
  writers.Add(wxT("Paul Okafor"));
  info.SetDocWriters(writers);
  wxArrayString artists;
  artists.Add(wxT("Lea Brandt"));
  info.SetArtists(artists);

  KelnoraAboutDialog::Show(info);
}

void my_frame::OnUpdateUi(wxUpdateUIEvent& /*event*/) {}

void my_frame::OnWindowCreate(wxWindowCreateEvent& /*event*/) {}

void my_frame::OnCloseAll(wxCloseEvent& /*event*/) {}

void my_frame::SetWindowShape() {}

// Registers a new handler of the type on every call (wxImage drops the
// duplicate), then loads through the module's one image loader; a file that
// does not load gives an empty bitmap.
void my_frame::imageLoad(wxBitmap& out, wxString path, int type) {
  if (type == wxBITMAP_TYPE_BMP) wxImage::AddHandler(new wxBMPHandler);
  if (type == wxBITMAP_TYPE_PNG) wxImage::AddHandler(new wxPNGHandler);
  if (!common::LoadImageFile(out, path, type)) out = wxNullBitmap;
}
