// What the copy command asks before it replaces a file or merges into a
// folder of the destination, and what each answer of the replacement dialog
// means for the row asked about. The dialog itself (copy_dialog) only
// stores the answer; these functions hold the decisions so that they can be
// checked without windows.
#pragma once

#include <wx/string.h>

// The folder and file questions as formats: the translated texts with every
// "XXX" replaced by "%s", to be filled with the item's name.
wxString FolderQuestionFormat();
wxString FileQuestionFormat();
// `format` (one of the two above) filled with `name`.
wxString ReplaceQuestionText(const wxString& format, const wxString& name);

// The message shown when a destination folder cannot be created:
// "Directory %s couldn't be created!" for system error 22 (invalid
// argument), otherwise "Create folder is error !". Caption: FolderErrorCaption.
wxString FolderCreateFailureMessage(int systemError, const wxString& path);
wxString FolderErrorCaption();

// What happens to one selected row after the questions.
enum ReplaceStep {
  REPLACE_COPY = 0,  // the row is copied
  REPLACE_SKIP,      // the row is left out (No)
  REPLACE_ABANDON,   // the whole copy is abandoned (Cancel)
};

// A selected file whose name exists as a file in the destination is asked
// about unless Yes To All was given to an earlier file question of the same
// command (the command's own flag).
bool AskFileQuestion(bool targetIsFile, bool yesToAllFiles);
// The answer to a file question: No skips the row, Cancel abandons the copy,
// Yes To All sets the command's flag; Yes copies.
ReplaceStep FileAnswerStep(int answer, bool* yesToAllFiles);

// A selected folder that exists in the destination is asked about unless the
// shared answer (g_copy_dialog_return) holds Yes To All.
bool AskFolderQuestion(bool targetIsFolder, int sharedAnswer);
// The answer to a folder question, given and leaving the shared answer: No
// skips the row and also leaves Yes To All in the shared answer (so later
// existing folders of the same copy are merged without a question), Cancel
// abandons the copy, Yes To All leaves Yes To All; Yes copies.
ReplaceStep FolderAnswerStep(int answer, int* sharedAnswer);

// The answer to the folder question of a tree source (the folder is copied
// as a whole): No and Cancel abandon the copy, Yes and Yes To All go on.
ReplaceStep TreeFolderAnswerStep(int answer);

// The name of a tree source folder: what follows the last "/" of its path;
// false when the path holds no "/".
bool TreeSourceName(const wxString& path, wxString* name);
