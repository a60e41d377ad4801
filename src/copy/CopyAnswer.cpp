#include "copy/CopyAnswer.h"

int g_copy_dialog_return;  // zero-initialised storage
