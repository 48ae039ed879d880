#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>

#include "network/socket_network.h"
#include "tests/delivery/smtp/mail_fixture.h"
#include "tests/support/trusted_certificates.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

// A certificate for "localhost" that this process trusts, and one that nobody does.
class Certificates {
 public:
  Certificates() {
    Make("trusted.pem", "localhost", "DNS:localhost");
    Make("stranger.pem", "localhost", "DNS:localhost");
    Make("elsewhere.pem", "elsewhere.example", "DNS:elsewhere.example");
    Make("address.pem", "127.0.0.1", "IP:127.0.0.1");
    trusted_.emplace(folder_.Write(
        "store.pem",
        folder_.Read("trusted.pem") + folder_.Read("elsewhere.pem") + folder_.Read("address.pem")));
  }

  std::string File(const std::string& name) const { return folder_.Path(name); }

 private:
  void Make(const std::string& file, const std::string& subject, const std::string& name) const {
    const std::string key = folder_.Path(file + ".key");
    const std::string certificate = folder_.Path(file + ".crt");
    ChildProcess openssl({"/usr/bin/openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt",
                          "ec_paramgen_curve:prime256v1", "-nodes", "-days", "2", "-subj",
                          "/CN=" + subject, "-addext", "subjectAltName=" + name, "-keyout",
                          HostPath(key), "-out", HostPath(certificate)},
                         folder_.Path("output"));
    ASSERT_EQ(openssl.Wait(), 0) << folder_.Read("output");
    folder_.Write(file, ReadWholeFile(key) + ReadWholeFile(certificate));
  }

  ScratchFolder folder_;
  std::optional<TrustedCertificates> trusted_;
};

const Certificates& TestCertificates() {
  static const Certificates certificates;
  return certificates;
}

std::string Script(const std::string& extensions, const std::string& certificate,
                   const std::string& rest = "") {
  const std::string file =
      certificate.empty()
          ? ""
          : R"(, "certificate": ")" + HostPath(TestCertificates().File(certificate)) + R"(")";
  return R"({"extensions": ["PIPELINING", )" + extensions +
         R"(], "users": {"user": "pass\u00e9 word"})" + file + rest + "}";
}

void UsePassword(TestMail& mail, const std::wstring& password = L"pass\u00e9 word") {
  mail.Component().SetServerHost(L"localhost");
  mail.UsePassword(password);
}

struct SecurityCase {
  const wchar_t* security;
  bool with_password;
  const char* certificate;  // "" for a server without TLS
  std::int32_t code;
  bool encrypted;
};

TEST(ProtectionTest, EachSettingMeetsEachKindOfServer) {
  constexpr SecurityCase kCases[] = {
      {L"", false, "", 0, false},
      {L"", false, "stranger.pem", 0, true},
      {L"", true, "", 0, false},
      {L"", true, "trusted.pem", 0, true},
      {L"", true, "stranger.pem", 16, false},
      {L"", true, "elsewhere.pem", 16, false},
      {L"Required", false, "", 16, false},
      {L"required", false, "stranger.pem", 16, false},
      {L"required", true, "trusted.pem", 0, true},
      {L"a slip of the pen", true, "", 16, false},
      {L"unverified", true, "stranger.pem", 0, true},
      {L"unverified", true, "", 0, false},
      {L"none", true, "trusted.pem", 0, false},
  };
  for (const SecurityCase& test : kCases) {
    SCOPED_TRACE(ToUtf8(test.security) + (test.with_password ? " with" : " without") +
                 " password, " + test.certificate);
    const bool has_tls = *test.certificate != '\0';
    const ScriptedSmtpServer server(
        Script(has_tls ? R"("STARTTLS", "AUTH PLAIN")" : R"("AUTH PLAIN")", test.certificate));
    TestMail mail(server.Port());
    mail.Component().SetServerHost(L"localhost");
    mail.Component().SetSecurity(test.security);
    if (test.with_password) UsePassword(mail);
    EXPECT_EQ(mail.SendTo(L"ann@example.com"), test.code);
    if (test.code == 0) {
      EXPECT_THAT(server.Envelope(0),
                  HasSubstr(test.encrypted ? R"("tls": true)" : R"("tls": false)"));
      EXPECT_THAT(server.Envelope(0),
                  HasSubstr(test.with_password ? R"("user": "user")" : R"("user": null)"));
    } else {
      EXPECT_THAT(server.Messages(), IsEmpty());
      EXPECT_THAT(server.Commands(), Each(Not(HasSubstr("AUTH"))));
    }
  }
}

TEST(ProtectionTest, ANumericAddressMustBeOneOfTheCertificates) {
  for (const auto& [certificate, code] : {std::pair("address.pem", 0), {"trusted.pem", 16}}) {
    SCOPED_TRACE(certificate);
    const ScriptedSmtpServer server(Script(R"("STARTTLS", "AUTH PLAIN")", certificate));
    TestMail mail(server.Port());
    UsePassword(mail);
    mail.Component().SetServerHost(L"127.0.0.1");
    EXPECT_EQ(mail.SendTo(L"ann@example.com"), code);
  }
}

// Leads to a server on another port, so that nothing has to listen on the port of implicit TLS.
class Detour : public Network {
 public:
  explicit Detour(int port) : port_(port) {}
  ConnectResult Connect(const std::string& host, std::int32_t /*port*/,
                        const ConnectTimeouts& timeouts, std::unique_ptr<Transport>& transport,
                        std::string& problem) override {
    return network_->Connect(host, port_, timeouts, transport, problem);
  }
  IoResult StartTls(std::unique_ptr<Transport>& transport, const std::string& host,
                    CertificateCheck check, Deadline deadline, std::string& problem) override {
    return network_->StartTls(transport, host, check, deadline, problem);
  }
  std::string HostName() const override { return "client.example.com"; }

 private:
  std::unique_ptr<Network> network_ = NewSocketNetwork();
  int port_;
};

TEST(ProtectionTest, Port465SpeaksTlsFromTheFirstByte) {
  const ScriptedSmtpServer server(
      Script(R"("AUTH SCRAM-SHA-256")", "trusted.pem", R"(, "implicit_tls": true)"));
  TestMail mail(465, std::chrono::seconds(20), std::make_unique<Detour>(server.Port()));
  UsePassword(mail);
  mail.Component().SetSecurity(L"required");
  EXPECT_EQ(mail.SendTo(L"ann@example.com"), 0);
  EXPECT_THAT(server.Envelope(0), HasSubstr(R"("tls": true, "user": "user")"));
  EXPECT_THAT(server.Commands(), Contains("1 EHLO client.example.com"));
}

TEST(ProtectionTest, FaultsAtStartTls) {
  struct Case {
    const char* action;
    std::int32_t code;
    std::int32_t code_with_password;
  };
  constexpr Case kCases[] = {
      {"550 never", 0, 16},
      {"garbage", 18, 18},
      {"pieces", 0, 0},
      // Thrown away, not taken for the answer to the EHLO that follows.
      {"inject", 0, 0},
  };
  ScriptedSmtpServer server("{}");
  std::size_t delivered = 0;
  for (const Case& test : kCases) {
    for (const bool with_password : {false, true}) {
      SCOPED_TRACE(test.action + std::string(with_password ? " with password" : ""));
      server.SetScript(Script(
          R"("STARTTLS", "AUTH PLAIN")", "trusted.pem",
          R"(, "faults": [{"at": "STARTTLS", "do": ")" + std::string(test.action) + R"("}])"));
      TestMail mail(server.Port());
      if (with_password) UsePassword(mail);
      const std::int32_t code = mail.SendTo(L"ann@example.com");
      EXPECT_EQ(code, with_password ? test.code_with_password : test.code);
      delivered += code == 0 ? 1 : 0;
      EXPECT_EQ(server.Messages().size(), delivered);
    }
  }
}

TEST(ProtectionTest, TheStrongestMechanismThatTheServerOffers) {
  struct Case {
    const char* offered;
    const char* expected;  // the command's beginning, "" where there is nothing in common
    const wchar_t* password;
    std::int32_t code;
    const char* rest;
  };
  const wchar_t* const right = L"pass\u00e9 word";
  const Case cases[] = {
      {R"("AUTH LOGIN PLAIN CRAM-MD5 SCRAM-SHA-256")", "AUTH SCRAM-SHA-256 ", right, 0, ""},
      {R"("AUTH LOGIN PLAIN CRAM-MD5")", "AUTH CRAM-MD5", right, 0, ""},
      {R"("AUTH LOGIN PLAIN")", "AUTH PLAIN ", right, 0, ""},
      {R"("AUTH=LOGIN")", "AUTH LOGIN", right, 0, ""},
      {R"("auth scram-sha-256")", "AUTH SCRAM-SHA-256", L"wrong", 24, ""},
      {R"("AUTH CRAM-MD5")", "AUTH CRAM-MD5", L"wrong", 24, ""},
      {R"("AUTH PLAIN")", "AUTH PLAIN", L"", 24, ""},
      {R"("AUTH LOGIN")", "AUTH LOGIN", L"wrong", 24, ""},
      {R"("AUTH GSSAPI")", "", right, 25, ""},
      {R"("8BITMIME")", "", right, 25, ""},
      // A server that cannot prove that it knows the password.
      {R"("AUTH SCRAM-SHA-256")", "AUTH SCRAM-SHA-256", right, 26, R"(, "wrong_signature": true)"},
      {R"("AUTH SCRAM-SHA-256 PLAIN")", "AUTH PLAIN", right, 0,
       R"(, "faults": [{"at": "AUTH-SCRAM-SHA-256", "do": "504 not any more"}])"},
      {R"("AUTH CRAM-MD5")", "AUTH CRAM-MD5", right, 26,
       R"(, "faults": [{"at": "AUTH-CRAM-MD5", "do": "334 !!!"}])"},
      {R"("AUTH SCRAM-SHA-256")", "AUTH SCRAM-SHA-256", right, 26,
       R"(, "faults": [{"at": "AUTH-SCRAM-SHA-256", "do": "235 believe me"}])"},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(std::string(test.offered) + test.rest);
    const ScriptedSmtpServer server(Script(test.offered, "", test.rest));
    TestMail mail(server.Port());
    UsePassword(mail, test.password);
    EXPECT_EQ(mail.SendTo(L"ann@example.com"), test.code);
    EXPECT_EQ(server.Messages().size(), test.code == 0 ? 1U : 0U);
    if (*test.expected == '\0')
      EXPECT_THAT(server.Commands(), Each(Not(HasSubstr("AUTH"))));
    else
      EXPECT_THAT(server.Commands(), Contains(HasSubstr(test.expected)));
  }
}

}  // namespace
}  // namespace pxscheduler
