/* The envelope around what a test is about. */
#ifndef SOAP_ENVELOPE_H
#define SOAP_ENVELOPE_H

#include <string>

inline std::string envelope(const std::string& content, const std::string& attributes = "") {
  return "<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/'" + attributes + ">" + content +
         "</e:Envelope>";
}

inline std::string body(const std::string& content, const std::string& attributes = "") {
  return envelope("<e:Body>" + content + "</e:Body>", attributes);
}

#endif
