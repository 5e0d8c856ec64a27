#include "reader/ValueNames.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>

namespace DovReader {

namespace {

bool ParseNumber(const std::string& text, double& value) {
  if (text.empty()) return false;
  char* end = nullptr;
  value = std::strtod(text.c_str(), &end);
  return end == text.c_str() + text.size() && std::isfinite(value);
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

ValueName SplitValueName(const std::string& name) {
  ValueName result;
  std::size_t separator = name.find(kValueSeparator);
  result.base = name.substr(0, separator);
  if (separator == std::string::npos) return result;
  std::string rest = name.substr(separator + 1);
  std::size_t equals = rest.find(" = ");
  if (equals == std::string::npos) return result;
  result.perValue = true;
  result.group = rest.substr(0, equals);
  result.value = rest.substr(equals + 3);
  return result;
}

std::string Readable(const std::string& name) {
  std::string result;
  for (unsigned char c : name) {
    if (c == '\\') {
      result += "\\\\";
    } else if (c < 0x20 || c == 0x7F) {
      char escaped[5];
      std::snprintf(escaped, sizeof escaped, "\\x%02X", c);
      result += escaped;
    } else {
      result += static_cast<char>(c);
    }
  }
  return result;
}

std::string Unescape(const std::string& text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] == '\\') {
      result += '\\';
      ++i;
    } else if (text[i] == '\\' && i + 3 < text.size() && text[i + 1] == 'x' &&
               HexDigit(text[i + 2]) >= 0 && HexDigit(text[i + 3]) >= 0) {
      result += static_cast<char>(HexDigit(text[i + 2]) * 16 + HexDigit(text[i + 3]));
      i += 3;
    } else {
      result += text[i];
    }
  }
  return result;
}

TimeAxis TimeAxis::FromValues(const std::vector<std::string>& valuesInOrder) {
  TimeAxis axis;
  std::map<double, std::string> byTime;
  axis.numeric = !valuesInOrder.empty();
  for (const std::string& text : valuesInOrder) {
    double number = 0;
    if (!ParseNumber(text, number) || !byTime.emplace(number, text).second) {
      axis.numeric = false;
      break;
    }
  }
  if (axis.numeric) {
    for (const auto& entry : byTime) {
      axis.times.push_back(entry.first);
      axis.values.push_back(entry.second);
    }
    return axis;
  }
  axis.values = valuesInOrder;
  for (std::size_t i = 0; i < valuesInOrder.size(); ++i) axis.times.push_back(double(i));
  return axis;
}

int TimeAxis::IndexOf(const std::string& value) const {
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (values[i] == value) return static_cast<int>(i);
  }
  return -1;
}

std::string FormatNumber(double value) {
  char text[40];
  for (int precision = 1; precision <= 17; ++precision) {
    std::snprintf(text, sizeof text, "%.*g", precision, value);
    if (std::strtod(text, nullptr) == value) break;
  }
  return text;
}

}  // namespace DovReader
