#include "mail/smtp_errors.h"

namespace pxscheduler {

std::wstring_view SmtpErrorText(std::int16_t code) {
  switch (code) {
    case 1:
      return L"An exception has occurred.";
    case 3:
      return L"The process has run out of memory.";
    case 4:
      return L"An error has occurred due to a problem;with the message body or attachments.";
    case 5:
      return L"There was a problem initiating the conversation;with the mail server. Ensure the "
             L"setting;of the Domain property is correct.";
    case 7:
      return L"The from address was not formatted correctly or was rejected;by the SMTP mail "
             L"server. Some SMTP mail servers will only accept;mail from particular addresses or "
             L"domains. SMTP mail servers may;also reject a from address if the server can not "
             L"successfully do;a reverse lookup on the from address.";
    case 8:
      return L"An error was reported in response to a recipient address.;The SMTP server may "
             L"refuse to handle mail for unknown recipients.";
    case 9:
      return L"There was an error connecting to the SMTP mail server.";
    case 10:
      return L"There was an error opening a file. If you have specified;file attachments, ensure "
             L"that they exist and that you have access to them.";
    case 11:
      return L"There was an error reading a file. If you have specified;file attachments, ensure "
             L"that they exist and the you have access to them.";
    case 15:
      return L"No mail server specified.";
    case 16:
      return L"There was a problem with the connection;and a socket error occurred.";
    case 17:
      return L"Could not resolve host.";
    case 18:
      return L"Connected but server sent back bad response.";
    case 19:
      return L"Could not create thread.";
    case 20:
      return L"Cancelled as a result of calling the Cancel() method.";
    case 21:
      return L"The operation timed-out while the host was being resolved.";
    case 22:
      return L"The operation timed-out while connecting.";
    case 24:
      return L"ESMTP Authentication failed.";
    case 25:
      return L"The selected ESMTP Authentication mode;is not supported by the server.";
    case 26:
      return L"ESMTP Authentication protocol error.";
    case 27:
      return L"Socket Timeout Error.";
    default:
      return L"";
  }
}

}  // namespace pxscheduler
