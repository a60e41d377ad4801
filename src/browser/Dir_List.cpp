#include "browser/Dir_List.h"
