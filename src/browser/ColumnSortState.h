// Which column of a file list is sorted and in which direction, and what a
// click on a column header does to that state.
#pragma once

class ColumnSortState {
 public:
  static constexpr int kColumns = 4;

  ColumnSortState() { Reset(); }

  // No column sorted, every direction back to ascending.
  void Reset();

  // A header click on `column`: returns false when nothing is to be sorted
  // (out of range, or an ignored column); otherwise updates the state and
  // returns true, the sort to run being (SortedColumn(), Ascending()).
  bool Click(int column);

  int SortedColumn() const { return m_sorted; }
  bool Ascending() const { return m_sorted >= 0 && m_ascending[m_sorted]; }
  bool AscendingFlag(int column) const { return m_ascending[column]; }

  // Header image of a column: up (32) or down (33) for the sorted column,
  // none (-1) for the others.
  int HeaderImage(int column) const;

 private:
  bool m_ascending[kColumns];
  int m_sorted;
};
