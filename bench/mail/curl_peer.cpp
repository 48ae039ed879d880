// A program as one would write it with libcurl: rows from SQLite, tokens filled in, each message
// handed to one handle. Usage: curl_peer DATABASE TEMPLATE.HTM TEMPLATE.TXT PORT

#include <curl/curl.h>
#include <malloc.h>
#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr const char* kTokens[] = {
    "[Number]",      "[Prefix]",       "[First Name]",  "[Last Name]",     "[Full Name]",
    "[Salutation]",  "[Phone Number]", "[Fax Number]",  "[Email Address]", "[Birthday]",
    "[Anniversary]", "[Travel Date]",  "[Return Date]", "[Start Date]",    "[Last Date]"};
constexpr int kColumns = 15;
constexpr int kEmailColumn = 8;
constexpr int kFullNameColumn = 4;

std::string ReadFile(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string Merged(std::string text, const std::vector<std::string>& values) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    const std::string_view token = kTokens[i];
    for (std::size_t found = 0; (found = text.find(token, found)) != std::string::npos;) {
      text.replace(found, token.size(), values[i]);
      found += values[i].size();
    }
  }
  return text;
}

void AppendLines(std::string_view text, std::string& message) {
  for (const char character : text) {
    if (character == '\n') message += '\r';
    message += character;
  }
}

struct Upload {
  std::string_view rest;
};

std::size_t Read(char* buffer, std::size_t size, std::size_t count, void* pointer) {
  auto& upload = *static_cast<Upload*>(pointer);
  const std::size_t taken = upload.rest.copy(buffer, size * count);
  upload.rest.remove_prefix(taken);
  return taken;
}

}  // namespace

int main(int argument_count, char** arguments) {
  if (argument_count != 5) return 2;
  const std::string html = ReadFile(arguments[2]);
  const std::string plain = ReadFile(arguments[3]);
  sqlite3* database = nullptr;
  sqlite3_stmt* rows = nullptr;
  if (sqlite3_open_v2(arguments[1], &database, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK ||
      sqlite3_prepare_v2(database,
                         "SELECT ProfileNumber, Prefix, FirstName, LastName, FullName, Attention,"
                         " Phone, Fax, Email, BirthDate, AnniversaryDate, TravelDate, ReturnDate,"
                         " FirstDate, LastDate FROM Clients ORDER BY Email",
                         -1, &rows, nullptr) != SQLITE_OK)
    return 2;
  // Else it depends on the chance order of what is allocated whether the memory that libcurl takes
  // for each message goes back to the system and comes again, which costs it a quarter of its
  // speed.
  mallopt(M_TRIM_THRESHOLD, 1 << 24);
  CURL* const curl = curl_easy_init();
  const std::string url = std::string("smtp://127.0.0.1:") + arguments[4];
  curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl, CURLOPT_MAIL_FROM, "<marketing@agency.example>");
  curl_easy_setopt(curl, CURLOPT_UPLOAD, 1L);
  curl_easy_setopt(curl, CURLOPT_READFUNCTION, Read);
  long sent = 0;
  std::string message;
  while (sqlite3_step(rows) == SQLITE_ROW) {
    std::vector<std::string> values;
    for (int i = 0; i < kColumns; ++i) {
      const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(rows, i));
      values.emplace_back(text == nullptr ? "" : text);
    }
    message = "From: marketing@agency.example\r\nTo: \"" + values[kFullNameColumn] + "\" <" +
              values[kEmailColumn] +
              ">\r\nSubject: " + Merged("Happy birthday, [First Name]!", values) +
              "\r\nDate: Mon, 16 Nov 2026 15:07:41 +0100\r\nMessage-ID: <" + std::to_string(sent) +
              "@agency.example>\r\nMIME-Version: 1.0\r\nAuto-Submitted: auto-generated\r\n"
              "Precedence: bulk\r\nContent-Type: multipart/alternative; boundary=\"=_b\"\r\n"
              "Content-Transfer-Encoding: 8bit\r\n\r\n--=_b\r\nContent-Type: text/plain; "
              "charset=utf-8\r\nContent-Transfer-Encoding: 8bit\r\n\r\n";
    AppendLines(Merged(plain, values), message);
    message +=
        "\r\n--=_b\r\nContent-Type: text/html; charset=utf-8\r\nContent-Transfer-Encoding: "
        "8bit\r\n\r\n";
    AppendLines(Merged(html, values), message);
    message += "\r\n--=_b--\r\n";
    Upload upload{message};
    curl_slist* const recipients =
        curl_slist_append(nullptr, ("<" + values[kEmailColumn] + ">").c_str());
    curl_easy_setopt(curl, CURLOPT_MAIL_RCPT, recipients);
    curl_easy_setopt(curl, CURLOPT_READDATA, &upload);
    sent += curl_easy_perform(curl) == CURLE_OK ? 1 : 0;
    curl_slist_free_all(recipients);
  }
  std::printf("%ld\n", sent);
  curl_easy_cleanup(curl);
  sqlite3_finalize(rows);
  sqlite3_close(database);
}
