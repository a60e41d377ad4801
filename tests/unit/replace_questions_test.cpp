// The replacement questions of the copy command: their texts, the failure
// message of a destination folder, and what each answer means for a row,
// including the kept asymmetry (files: the command's own Yes To All flag;
// folders: the shared answer, which a No also turns into Yes To All).
#include <gtest/gtest.h>

#include "copy/CopyAnswer.h"
#include "copy/ReplaceQuestions.h"

namespace {

TEST(ReplaceQuestions, FolderQuestionNamesTheFolder) {
  EXPECT_EQ(ReplaceQuestionText(FolderQuestionFormat(), "docs"),
            "This folder already contains a folder named 'docs' \n\nIf the files in the existing "
            "Folder are the same name as files in \nthe folder you are copying. They will be "
            "replaced.\nDo you still want to copy the folder? ");
}

TEST(ReplaceQuestions, FileQuestionNamesTheFile) {
  EXPECT_EQ(ReplaceQuestionText(FileQuestionFormat(), "b.txt"),
            "This folder already contains a file named 'b.txt' \n\nWould you like to replace the "
            "existing file with this one? ");
}

TEST(ReplaceQuestions, NamesWithPercentSignsAndNonAsciiLettersStayAsTheyAre) {
  const wxString name = wxString::FromUTF8("100% \xc3\x9c" "ber %s %d");
  const wxString text = ReplaceQuestionText(FileQuestionFormat(), name);
  EXPECT_NE(text.Find("'" + name + "'"), wxNOT_FOUND) << text.utf8_string();
}

TEST(ReplaceQuestions, FolderCreationFailureMessages) {
  EXPECT_EQ(FolderCreateFailureMessage(22, "/mnt/E/a?b"), "Directory /mnt/E/a?b couldn't be created!");
  EXPECT_EQ(FolderCreateFailureMessage(17, "/mnt/E/x"), "Create folder is error !");
  EXPECT_EQ(FolderCreateFailureMessage(28, "/mnt/E/x"), "Create folder is error !");
  EXPECT_EQ(FolderCreateFailureMessage(0, "/mnt/E/x"), "Create folder is error !");
  EXPECT_EQ(FolderErrorCaption(), "Confirm Folder");
}

TEST(ReplaceQuestions, FileQuestionAskedOnlyForAnExistingFileWithoutYesToAll) {
  EXPECT_TRUE(AskFileQuestion(true, false));
  EXPECT_FALSE(AskFileQuestion(true, true));
  EXPECT_FALSE(AskFileQuestion(false, false));
  EXPECT_FALSE(AskFileQuestion(false, true));
}

TEST(ReplaceQuestions, FileAnswers) {
  bool all = false;
  EXPECT_EQ(FileAnswerStep(COPY_ANSWER_YES, &all), REPLACE_COPY);
  EXPECT_FALSE(all);
  EXPECT_EQ(FileAnswerStep(COPY_ANSWER_NO, &all), REPLACE_SKIP);
  EXPECT_FALSE(all);
  EXPECT_EQ(FileAnswerStep(COPY_ANSWER_CANCEL, &all), REPLACE_ABANDON);
  EXPECT_FALSE(all);
  EXPECT_EQ(FileAnswerStep(COPY_ANSWER_YES_TO_ALL, &all), REPLACE_COPY);
  EXPECT_TRUE(all);
  // Later answers never clear the flag.
  EXPECT_EQ(FileAnswerStep(COPY_ANSWER_NO, &all), REPLACE_SKIP);
  EXPECT_TRUE(all);
}

TEST(ReplaceQuestions, FolderQuestionAskedUnlessTheSharedAnswerIsYesToAll) {
  EXPECT_TRUE(AskFolderQuestion(true, COPY_ANSWER_NONE));
  EXPECT_TRUE(AskFolderQuestion(true, COPY_ANSWER_YES));
  EXPECT_TRUE(AskFolderQuestion(true, COPY_ANSWER_NO));
  EXPECT_TRUE(AskFolderQuestion(true, COPY_ANSWER_CANCEL));
  EXPECT_FALSE(AskFolderQuestion(true, COPY_ANSWER_YES_TO_ALL));
  EXPECT_FALSE(AskFolderQuestion(false, COPY_ANSWER_NONE));
}

TEST(ReplaceQuestions, FolderAnswersAndTheSharedAnswer) {
  int shared = COPY_ANSWER_YES;
  EXPECT_EQ(FolderAnswerStep(COPY_ANSWER_YES, &shared), REPLACE_COPY);
  EXPECT_EQ(shared, COPY_ANSWER_YES);
  shared = COPY_ANSWER_CANCEL;
  EXPECT_EQ(FolderAnswerStep(COPY_ANSWER_CANCEL, &shared), REPLACE_ABANDON);
  EXPECT_EQ(shared, COPY_ANSWER_CANCEL);
  shared = COPY_ANSWER_YES_TO_ALL;
  EXPECT_EQ(FolderAnswerStep(COPY_ANSWER_YES_TO_ALL, &shared), REPLACE_COPY);
  EXPECT_EQ(shared, COPY_ANSWER_YES_TO_ALL);
  // No skips this folder and leaves Yes To All behind: the next existing
  // folder of the same copy is merged without a question.
  shared = COPY_ANSWER_NO;
  EXPECT_EQ(FolderAnswerStep(COPY_ANSWER_NO, &shared), REPLACE_SKIP);
  EXPECT_EQ(shared, COPY_ANSWER_YES_TO_ALL);
  EXPECT_FALSE(AskFolderQuestion(true, shared));
}

TEST(ReplaceQuestions, FolderYesToAllDoesNotSuppressFileQuestions) {
  int shared = COPY_ANSWER_NONE;
  bool filesAll = false;
  EXPECT_EQ(FolderAnswerStep(COPY_ANSWER_YES_TO_ALL, &shared), REPLACE_COPY);
  EXPECT_FALSE(filesAll);
  EXPECT_TRUE(AskFileQuestion(true, filesAll));
  // (The reverse, a file's Yes To All and the folder questions, is a matter
  // of the row order: the list shows every folder before the files. The
  // frame's tests check it with real rows.)
}

TEST(ReplaceQuestions, TreeFolderAnswers) {
  EXPECT_EQ(TreeFolderAnswerStep(COPY_ANSWER_YES), REPLACE_COPY);
  EXPECT_EQ(TreeFolderAnswerStep(COPY_ANSWER_YES_TO_ALL), REPLACE_COPY);
  EXPECT_EQ(TreeFolderAnswerStep(COPY_ANSWER_NO), REPLACE_ABANDON);
  EXPECT_EQ(TreeFolderAnswerStep(COPY_ANSWER_CANCEL), REPLACE_ABANDON);
}

TEST(ReplaceQuestions, TreeSourceNameIsTheLastComponent) {
  wxString name = "unchanged";
  EXPECT_TRUE(TreeSourceName("/mnt/C/docs", &name));
  EXPECT_EQ(name, "docs");
  EXPECT_TRUE(TreeSourceName("/mnt/C", &name));
  EXPECT_EQ(name, "C");
  EXPECT_TRUE(TreeSourceName("/mnt/C/a b/it's", &name));
  EXPECT_EQ(name, "it's");
  EXPECT_TRUE(TreeSourceName("/mnt/C/", &name));
  EXPECT_EQ(name, "");
  name = "unchanged";
  EXPECT_FALSE(TreeSourceName("C:", &name));
  EXPECT_EQ(name, "unchanged");
  EXPECT_FALSE(TreeSourceName("", &name));
}

}  // namespace
