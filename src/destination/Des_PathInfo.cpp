#include "destination/Des_PathInfo.h"

Des_PathInfo::Des_PathInfo() : m_result(0) {}

Des_PathInfo g_Des_PathInfo;
