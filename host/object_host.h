// The managed members of System.Object every wrapper forwards to: text, hash, equality,
// type tests, type objects and disposal.
#pragma once

#include <cstdint>
#include <string>

struct VariantArg;

class ObjectHost {
public:
    // The one instance, bound on first use against the exchange host's assembly.
    static ObjectHost& get_instance();

    // 1 with *out_str a new Python str; 0 without text (an error may be pending).
    int to_string_of_obj(void* handle, void** out_str) const { return to_string_of_obj_(handle, out_str); }
    int to_string_of_stc(void* handle, void** out_str) const { return to_string_of_stc_(handle, out_str); }
    int32_t get_hash_code_of_obj(void* handle) const { return get_hash_code_of_obj_(handle); }
    int32_t get_hash_code_of_stc(void* handle) const { return get_hash_code_of_stc_(handle); }
    // 1 equal, 0 not equal, -1 with a Python error pending.
    int equals_of_obj(void* handle, const VariantArg* other) const { return equals_of_obj_(handle, other); }
    int equals_of_stc(void* handle, const VariantArg* other) const { return equals_of_stc_(handle, other); }
    // 1 when the object is an instance of the type the variant designates, 0 if not, -1 on error.
    int is_type_of(void* handle, const VariantArg* type) const { return is_type_of_(handle, type); }
    int get_type_name(const VariantArg* value, void** out_str) const { return get_type_name_(value, out_str); }
    // 1 with *out_handle a new handle of the managed System.Type; 0 on failure.
    int get_obj_type(void* handle, void** out_handle) const { return get_obj_type_(handle, out_handle); }
    int get_stc_type(void* handle, void** out_handle) const { return get_stc_type_(handle, out_handle); }
    // 0 when disposed (or nothing to dispose), -1 with a Python error pending.
    int dispose(void* handle) const { return dispose_(handle); }

    bool is_not_valid() const { return not_valid_; }
    const std::string& error_msg() const { return error_; }

private:
    ObjectHost();
    ObjectHost(const ObjectHost&) = delete;
    ObjectHost& operator=(const ObjectHost&) = delete;

    int (*to_string_of_obj_)(void*, void**) = nullptr;
    int (*to_string_of_stc_)(void*, void**) = nullptr;
    int32_t (*get_hash_code_of_obj_)(void*) = nullptr;
    int32_t (*get_hash_code_of_stc_)(void*) = nullptr;
    int (*equals_of_obj_)(void*, const VariantArg*) = nullptr;
    int (*equals_of_stc_)(void*, const VariantArg*) = nullptr;
    int (*is_type_of_)(void*, const VariantArg*) = nullptr;
    int (*get_type_name_)(const VariantArg*, void**) = nullptr;
    int (*get_obj_type_)(void*, void**) = nullptr;
    int (*get_stc_type_)(void*, void**) = nullptr;
    int (*dispose_)(void*) = nullptr;

    bool not_valid_ = false;
    std::string error_;
};

extern const char* const ObjectHostTypeName;  // "Quorix.WrpGen.Interop.ObjectHost"
