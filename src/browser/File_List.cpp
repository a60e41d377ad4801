#include "browser/File_List.h"
