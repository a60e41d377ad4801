#include "browser/ColumnSortState.h"

#include "browser/ListingLogic.h"

void ColumnSortState::Reset() {
  for (bool& a : m_ascending) a = true;
  m_sorted = -1;
}

bool ColumnSortState::Click(int column) {
  if (column < 0 || column >= kColumns) return false;
  if (m_sorted == -1) {
    m_sorted = column;
    m_ascending[column] = true;
  } else if (m_sorted != column) {
    Reset();
    m_sorted = column;
  } else {
    m_ascending[column] = !m_ascending[column];
  }
  return true;
}

int ColumnSortState::HeaderImage(int column) const {
  if (column != m_sorted || column < 0) return -1;
  return m_ascending[column] ? listing::IMG_SORT_UP : listing::IMG_SORT_DOWN;
}
