#include "copy/ReplaceQuestions.h"

#include <wx/intl.h>

#include "copy/CopyAnswer.h"

namespace {

wxString AsFormat(const wxString& text) {
  wxString format(text);
  format.Replace("XXX", "%s");
  return format;
}

// No skips the row, Cancel abandons the copy, every other answer copies.
ReplaceStep StepOfAnswer(int answer) {
  if (answer == COPY_ANSWER_NO) return REPLACE_SKIP;
  if (answer == COPY_ANSWER_CANCEL) return REPLACE_ABANDON;
  return REPLACE_COPY;
}

}  // namespace

wxString FolderQuestionFormat() {
  return AsFormat(wxGetTranslation(
      "This folder already contains a folder named 'XXX' \n\nIf the files in the existing Folder "
      "are the same name as files in \nthe folder you are copying. They will be replaced.\nDo you "
      "still want to copy the folder? "));
}

wxString FileQuestionFormat() {
  return AsFormat(wxGetTranslation(
      "This folder already contains a file named 'XXX' \n\nWould you like to replace the "
      "existing file with this one? "));
}

wxString ReplaceQuestionText(const wxString& format, const wxString& name) {
  return wxString::Format(format, name);
}

wxString FolderCreateFailureMessage(int systemError, const wxString& path) {
  if (systemError == 22)
    return wxString::Format(wxGetTranslation("Directory %s couldn't be created!"), path);
  return wxGetTranslation("Create folder is error !");
}

wxString FolderErrorCaption() { return wxGetTranslation("Confirm Folder"); }

bool AskFileQuestion(bool targetIsFile, bool yesToAllFiles) {
  return targetIsFile && !yesToAllFiles;
}

ReplaceStep FileAnswerStep(int answer, bool* yesToAllFiles) {
  if (answer == COPY_ANSWER_YES_TO_ALL) *yesToAllFiles = true;
  return StepOfAnswer(answer);
}

bool AskFolderQuestion(bool targetIsFolder, int sharedAnswer) {
  return targetIsFolder && sharedAnswer != COPY_ANSWER_YES_TO_ALL;
}

ReplaceStep FolderAnswerStep(int answer, int* sharedAnswer) {
  // A No also leaves Yes To All behind, as it always has: after one No, the
  // later existing folders of this copy are merged without a question.
  if (answer == COPY_ANSWER_NO || answer == COPY_ANSWER_YES_TO_ALL)
    *sharedAnswer = COPY_ANSWER_YES_TO_ALL;
  return StepOfAnswer(answer);
}

ReplaceStep TreeFolderAnswerStep(int answer) {
  return (answer == COPY_ANSWER_NO || answer == COPY_ANSWER_CANCEL) ? REPLACE_ABANDON
                                                                     : REPLACE_COPY;
}

bool TreeSourceName(const wxString& path, wxString* name) {
  const int slash = path.Find('/', true);
  if (slash == wxNOT_FOUND) return false;
  *name = path.Mid(static_cast<size_t>(slash) + 1);
  return true;
}
