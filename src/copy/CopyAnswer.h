// The last answer given to a replacement question, shared by the copy
// command and the replacement dialog: 0 none, 200 Yes, 201 Yes To All,
// 202 No, 203 Cancel.
#pragma once

enum {
  COPY_ANSWER_NONE = 0,
  COPY_ANSWER_YES = 200,
  COPY_ANSWER_YES_TO_ALL = 201,
  COPY_ANSWER_NO = 202,
  COPY_ANSWER_CANCEL = 203,
};

extern int g_copy_dialog_return;
