// Holds one million rows of sixteen columns with 300 bytes of text a row, sorts them by address and
// reads every field, as a result set of ours and as its peer, a vector of std::wstring a row. Each
// runs in a process of its own, so that the peak of its memory can be told.
//
// Usage: bench_row_store [ROWS]

#include "data/rows/row_store.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <variant>
#include <vector>

#include "platform/letter_case.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kTextColumns = 8;
constexpr std::size_t kDateColumns = 6;
constexpr std::size_t kColumns = kTextColumns + kDateColumns + 2;  // a number and a flag
constexpr std::size_t kEmail = 7;
constexpr std::size_t kTextBytes = 300;

// The texts of one client, made up from its number; the addresses are in no order and in both
// cases.
struct Client {
  std::int64_t number;
  std::string texts[kTextColumns];
};

Client MakeClient(std::size_t row) {
  const std::uint64_t mixed = row * 0x9E3779B97F4A7C15U;
  Client client{static_cast<std::int64_t>(row), {}};
  client.texts[kEmail] =
      (mixed % 3 == 0 ? "Client." : "client.") + std::to_string(mixed >> 34U) + "@example.org";
  std::size_t left = kTextBytes - client.texts[kEmail].size();
  for (std::size_t column = 0; column < kEmail; ++column) {
    const std::size_t size = column + 1 == kEmail ? left : left / (kEmail - column);
    client.texts[column] = std::string(size, static_cast<char>('a' + mixed % 26));
    left -= size;
  }
  return client;
}

// What the values themselves take: the text, eight bytes a date, four the number, one the flag.
constexpr std::size_t kValueBytes = kTextBytes + kDateColumns * 8 + 4 + 1;

struct Result {
  double fill_seconds;
  double sort_seconds;
  double read_seconds;
  double peak_bytes;
  std::size_t characters;
};

double PeakBytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) * 1024;
}

class Stopwatch {
 public:
  double Lap() {
    const auto now = std::chrono::steady_clock::now();
    const std::chrono::duration<double> lap = now - start_;
    start_ = now;
    return lap.count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

DateTime MakeDate(std::size_t row, std::size_t column) {
  return {std::chrono::sys_days{std::chrono::days{(row * 31 + column) % 20000}}};
}

Result RunRowStore(std::size_t count) {
  std::vector<std::wstring> names;
  for (std::size_t column = 0; column < kColumns; ++column)
    names.push_back(L"C" + std::to_wstring(column));
  Result result{};
  Stopwatch watch;
  RowStore rows{std::move(names)};
  for (std::size_t row = 0; row < count; ++row) {
    const Client client = MakeClient(row);
    for (const std::string& text : client.texts) rows.AppendText(text);
    for (std::size_t column = 0; column < kDateColumns; ++column)
      rows.AppendDateTime(MakeDate(row, column));
    rows.AppendInteger(client.number);
    rows.AppendBool(true);
    rows.EndRow();
  }
  result.fill_seconds = watch.Lap();
  rows.Sort(kEmail);
  result.sort_seconds = watch.Lap();
  for (std::size_t row = 0; row < count; ++row)
    for (std::size_t column = 0; column < kColumns; ++column) {
      const Value value = rows.Read(row, column);
      if (const auto* text = std::get_if<std::wstring>(&value)) result.characters += text->size();
    }
  result.read_seconds = watch.Lap();
  return result;
}

// Every value as wide text, ordered by a stable sort of lower-case addresses.
Result RunVectors(std::size_t count) {
  Result result{};
  Stopwatch watch;
  std::vector<std::vector<std::wstring>> rows;
  for (std::size_t row = 0; row < count; ++row) {
    const Client client = MakeClient(row);
    std::vector<std::wstring>& cells = rows.emplace_back();
    cells.reserve(kColumns);
    for (const std::string& text : client.texts) cells.push_back(FromUtf8(text));
    for (std::size_t column = 0; column < kDateColumns; ++column)
      cells.push_back(std::to_wstring(MakeDate(row, column).date.time_since_epoch().count()));
    cells.push_back(std::to_wstring(client.number));
    cells.emplace_back(L"1");
  }
  result.fill_seconds = watch.Lap();
  std::stable_sort(rows.begin(), rows.end(), [](const auto& left, const auto& right) {
    return LowerCase(left[kEmail]) < LowerCase(right[kEmail]);
  });
  result.sort_seconds = watch.Lap();
  for (const std::vector<std::wstring>& cells : rows)
    for (std::size_t column = 0; column < kTextColumns; ++column) {
      const std::wstring copy = cells[column];
      result.characters += copy.size();
    }
  result.read_seconds = watch.Lap();
  return result;
}

// Runs in a child and reports what the peak of its memory is above that of a child that did
// nothing.
void Measure(const char* name, std::size_t count, const std::function<Result(std::size_t)>& run) {
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    const double base = PeakBytes();
    Result result = run(count);
    result.peak_bytes = PeakBytes() - base;
    std::printf("%-10s fill %6.2f s, sort %6.2f s, read %6.2f s, %8.1f MiB = %.3f of the values\n",
                name, result.fill_seconds, result.sort_seconds, result.read_seconds,
                result.peak_bytes / 1048576,
                result.peak_bytes / static_cast<double>(count * kValueBytes));
    std::fflush(stdout);
    _exit(result.characters == count * kTextBytes ? 0 : 1);
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
    std::fprintf(stderr, "%s failed\n", name);
    std::exit(1);
  }
}

}  // namespace
}  // namespace pxscheduler

int main(int count, char** arguments) {
  const std::size_t rows = count > 1 ? std::strtoul(arguments[1], nullptr, 10) : 1000000;
  std::printf("%zu rows, %.1f MiB of values\n", rows,
              static_cast<double>(rows * pxscheduler::kValueBytes) / 1048576);
  pxscheduler::Measure("RowStore", rows, pxscheduler::RunRowStore);
  pxscheduler::Measure("vectors", rows, pxscheduler::RunVectors);
}
