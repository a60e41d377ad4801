// The fault rules of the test file system: parser and decisions. The text
// format is described in faultfs_rules.h.
#include "faultfs_rules.h"

#include <errno.h>
#include <fnmatch.h>
#include <stdlib.h>

#include <sstream>

namespace vt {
namespace faultfs {

namespace {

struct ErrnoName {
  const char* name;
  int value;
};

const ErrnoName kErrnos[] = {
    {"EIO", EIO},       {"ENOSPC", ENOSPC},         {"EACCES", EACCES},   {"EPERM", EPERM},
    {"ENOENT", ENOENT}, {"EINVAL", EINVAL},         {"EROFS", EROFS},     {"EEXIST", EEXIST},
    {"EBUSY", EBUSY},   {"ENOTEMPTY", ENOTEMPTY},   {"EILSEQ", EILSEQ},   {"EDQUOT", EDQUOT},
    {"EFBIG", EFBIG},   {"ENAMETOOLONG", ENAMETOOLONG}, {"ENOTDIR", ENOTDIR}, {"EISDIR", EISDIR},
};

struct OpName {
  const char* name;
  Op op;
};

const OpName kOps[] = {
    {"open", Op::Open},         {"create", Op::Create},   {"mkdir", Op::Mkdir},
    {"unlink", Op::Unlink},     {"rmdir", Op::Rmdir},     {"rename", Op::Rename},
    {"truncate", Op::Truncate}, {"utimens", Op::Utimens}, {"fsync", Op::Fsync},
    {"flush", Op::Flush},
};

bool ParseSize(const std::string& s, uint64_t* out) {
  if (s.empty() || s[0] < '0' || s[0] > '9') return false;
  char* end = nullptr;
  errno = 0;
  unsigned long long v = strtoull(s.c_str(), &end, 10);
  if (errno != 0) return false;
  uint64_t mul = 1;
  std::string suffix(end);
  if (suffix == "K" || suffix == "k") {
    mul = 1024;
  } else if (suffix == "M") {
    mul = 1024 * 1024;
  } else if (suffix == "G") {
    mul = 1024ull * 1024 * 1024;
  } else if (!suffix.empty()) {
    return false;
  }
  if (v > UINT64_MAX / mul) return false;
  *out = v * mul;
  return true;
}

bool ParseErrno(const std::string& s, int* out) {
  for (const ErrnoName& e : kErrnos) {
    if (s == e.name) {
      *out = e.value;
      return true;
    }
  }
  uint64_t v = 0;
  if (ParseSize(s, &v) && v > 0 && v < 4096 && s.find_first_not_of("0123456789") == std::string::npos) {
    *out = static_cast<int>(v);
    return true;
  }
  return false;
}

// Parses one rule's words after the glob; returns "" or what is wrong.
std::string ParseAction(const std::vector<std::string>& w, Rule* r) {
  size_t i = 1;  // w[0] is the glob
  const std::string& a = w[i++];
  auto more = [&]() { return i < w.size(); };
  auto size = [&](uint64_t* out, const char* what) -> std::string {
    if (!more()) return std::string("missing ") + what;
    if (!ParseSize(w[i], out)) return std::string("bad ") + what + " \"" + w[i] + "\"";
    ++i;
    return "";
  };
  // The optional tails: "times N", "at open N", "at getattr N", "at <offset>".
  auto times = [&]() -> std::string {
    if (more() && w[i] == "times") {
      ++i;
      std::string e = size(&r->times, "count after \"times\"");
      if (!e.empty()) return e;
      if (r->times == 0) return "\"times\" needs a count of 1 or more";
    }
    return "";
  };
  auto trigger = [&]() -> std::string {
    if (more() && w[i] == "at") {
      ++i;
      if (!more()) return "missing \"open N\" or \"getattr N\" after \"at\"";
      if (w[i] == "open") {
        r->trigger = Trigger::Open;
      } else if (w[i] == "getattr") {
        r->trigger = Trigger::Getattr;
      } else {
        return "unknown trigger \"" + w[i] + "\" (open or getattr)";
      }
      ++i;
      std::string e = size(&r->triggerCount, "trigger count");
      if (!e.empty()) return e;
      if (r->triggerCount == 0) return "the trigger count starts at 1";
    }
    return "";
  };

  std::string e;
  if (a == "read-eio") {
    r->action = Action::ReadEio;
    if (!more()) return "missing range <from>-<to>";
    const std::string& range = w[i++];
    size_t dash = range.find('-');
    if (dash == std::string::npos) return "bad range \"" + range + "\" (<from>-<to>)";
    if (!ParseSize(range.substr(0, dash), &r->from)) return "bad range start in \"" + range + "\"";
    std::string to = range.substr(dash + 1);
    r->to = kNoEnd;
    if (!to.empty() && !ParseSize(to, &r->to)) return "bad range end in \"" + range + "\"";
    if (r->to <= r->from) return "empty range \"" + range + "\"";
    e = times();
  } else if (a == "read-sleep") {
    r->action = Action::ReadSleep;
    if (!more()) return "missing seconds";
    char* end = nullptr;
    r->seconds = strtod(w[i].c_str(), &end);
    if (*end != '\0' || !(r->seconds >= 0) || r->seconds > 3600) return "bad seconds \"" + w[i] + "\"";
    ++i;
    if (more() && w[i] == "at") {
      ++i;
      e = size(&r->from, "offset after \"at\"");
      r->hasAt = true;
    }
    if (e.empty()) e = times();
  } else if (a == "read-short") {
    r->action = Action::ReadShort;
    e = size(&r->bytes, "byte count");
    if (e.empty() && r->bytes == 0) e = "read-short needs 1 byte or more";
    if (e.empty()) e = times();
  } else if (a == "shrink-after-count" || a == "grow-after-count") {
    r->action = a[0] == 's' ? Action::Shrink : Action::Grow;
    e = size(&r->bytes, a[0] == 's' ? "new size" : "byte count");
    if (e.empty()) e = trigger();
  } else if (a == "vanish-after-count") {
    r->action = Action::Vanish;
    e = trigger();
  } else if (a == "write-enospc-after" || a == "write-eio-after") {
    r->action = a == "write-eio-after" ? Action::WriteEioAfter : Action::WriteEnospcAfter;
    e = size(&r->bytes, "byte count");
  } else if (a == "statfs-free") {
    r->action = Action::StatfsFree;
    e = size(&r->bytes, "byte count");
  } else if (a.size() > 6 && a.compare(a.size() - 6, 6, "-error") == 0) {
    r->action = Action::OpError;
    std::string op = a.substr(0, a.size() - 6);
    bool found = false;
    for (const OpName& o : kOps) {
      if (op == o.name) {
        r->op = o.op;
        found = true;
      }
    }
    if (!found) return "unknown operation \"" + op + "\" in \"" + a + "\"";
    if (!more()) return "missing error name";
    if (!ParseErrno(w[i], &r->error)) return "unknown error \"" + w[i] + "\"";
    ++i;
    e = times();
  } else {
    return "unknown action \"" + a + "\"";
  }
  if (!e.empty()) return e;
  if (more()) return "unexpected \"" + w[i] + "\"";
  return "";
}

bool Matches(const Rule& r, const std::string& path) {
  return fnmatch(r.glob.c_str(), path.c_str(), 0) == 0;
}

// Counts a hit of a rule with "times"; false once the rule is used up.
bool TakeHit(Rule& r) {
  if (r.times != 0 && r.hits >= r.times) return false;
  ++r.hits;
  return true;
}

}  // namespace

bool ParseRules(const std::string& text, std::vector<Rule>* rules, std::string* error) {
  rules->clear();
  std::istringstream in(text);
  std::string line;
  int n = 0;
  while (std::getline(in, line)) {
    ++n;
    std::istringstream words(line);
    std::vector<std::string> w;
    std::string word;
    while (words >> word) w.push_back(word);
    if (w.empty() || w[0][0] == '#') continue;
    Rule r;
    r.line = n;
    r.glob = w[0];
    std::string e = w.size() < 2 ? "missing action after the glob" : ParseAction(w, &r);
    if (!e.empty()) {
      *error = "line " + std::to_string(n) + ": " + e;
      rules->clear();
      return false;
    }
    rules->push_back(r);
  }
  return true;
}

void Rules::Replace(std::vector<Rule> rules) {
  std::lock_guard<std::mutex> lock(mutex_);
  rules_ = std::move(rules);
}

ReadFault Rules::OnRead(const std::string& path, uint64_t offset, uint64_t size) {
  std::lock_guard<std::mutex> lock(mutex_);
  ReadFault f;
  uint64_t end = offset + size;
  for (Rule& r : rules_) {
    if (!Matches(r, path)) continue;
    switch (r.action) {
      case Action::ReadSleep:
        if ((!r.hasAt || (r.from >= offset && r.from < end)) && TakeHit(r)) f.sleepSeconds += r.seconds;
        break;
      case Action::ReadEio:
        if (offset < r.to && end > r.from && f.error == 0 && TakeHit(r)) f.error = EIO;
        break;
      case Action::ReadShort:
        if (size > r.bytes && TakeHit(r) && (f.maxBytes == 0 || r.bytes < f.maxBytes)) f.maxBytes = r.bytes;
        break;
      default:
        break;
    }
  }
  return f;
}

uint64_t Rules::OnWrite(const std::string& path, uint64_t size, int* error) {
  std::lock_guard<std::mutex> lock(mutex_);
  uint64_t allowed = size;
  int err = 0;
  for (Rule& r : rules_) {
    if ((r.action != Action::WriteEnospcAfter && r.action != Action::WriteEioAfter) || !Matches(r, path)) {
      continue;
    }
    uint64_t left = r.written >= r.bytes ? 0 : r.bytes - r.written;
    if (left < allowed) {
      allowed = left;
      if (left == 0) err = r.action == Action::WriteEioAfter ? EIO : ENOSPC;
    }
  }
  for (Rule& r : rules_) {
    if ((r.action == Action::WriteEnospcAfter || r.action == Action::WriteEioAfter) && Matches(r, path)) {
      r.written += allowed;
    }
  }
  if (allowed == 0 && size > 0) *error = err;
  return allowed;
}

std::vector<Change> Rules::OnTrigger(const std::string& path, Trigger trigger) {
  std::lock_guard<std::mutex> lock(mutex_);
  std::vector<Change> changes;
  for (Rule& r : rules_) {
    if (r.action != Action::Shrink && r.action != Action::Grow && r.action != Action::Vanish) continue;
    if (r.spent || r.trigger != trigger || !Matches(r, path)) continue;
    if (++r.events < r.triggerCount) continue;
    r.spent = true;
    changes.push_back(Change{r.action, r.bytes});
  }
  return changes;
}

int Rules::OpFault(const std::string& path, Op op) {
  std::lock_guard<std::mutex> lock(mutex_);
  for (Rule& r : rules_) {
    if (r.action == Action::OpError && r.op == op && Matches(r, path) && TakeHit(r)) return r.error;
  }
  return 0;
}

uint64_t Rules::StatfsFree() {
  std::lock_guard<std::mutex> lock(mutex_);
  uint64_t free = kNoEnd;
  for (const Rule& r : rules_) {
    if (r.action == Action::StatfsFree && r.bytes < free) free = r.bytes;
  }
  return free;
}

}  // namespace faultfs
}  // namespace vt
