// The destination list's listing records and arrays. They are the source
// list's own records (same fields, same owning object arrays) under the
// names the destination side uses, so both lists read, sort and show a
// folder with the same code.
#pragma once

#include "browser/ArrayDir.h"
#include "browser/ArrayFile.h"
#include "browser/Dir_List.h"
#include "browser/File_List.h"

using Des_Dir_List = Dir_List;
using Des_File_List = File_List;
using Des_ArrayDir = ArrayDir;
using Des_ArrayFile = ArrayFile;
