# cmake -DIN=FILE -DOUT=FILE -DNAME=NAME -P embed_text.cmake: a source with the bytes of a text file
# as fabscope::internal::NAME.
file(READ "${IN}" text)
if(text MATCHES "\\)embedded\"")
  message(FATAL_ERROR "${IN} holds the mark that ends the literal")
endif()
file(WRITE "${OUT}" "#include <string_view>

namespace fabscope::internal {
extern const std::string_view ${NAME};
constinit const std::string_view ${NAME} = R\"embedded(${text})embedded\";
}  // namespace fabscope::internal
")
