#include "Categories/NSObject+VLClass.h"

namespace vorlane {

std::string vl_className(const Value& value) {
    switch (value.type()) {
        case Value::value_t::object:
            return "NSDictionary";
        case Value::value_t::array:
            return "NSArray";
        case Value::value_t::string:
            return "NSString";
        case Value::value_t::binary:
            return "NSData";
        case Value::value_t::boolean:
        case Value::value_t::number_integer:
        case Value::value_t::number_unsigned:
        case Value::value_t::number_float:
            return "NSNumber";
        case Value::value_t::null:
        case Value::value_t::discarded:
            break;
    }
    return "NSNull";
}

}  // namespace vorlane
