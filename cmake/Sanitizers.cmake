# AddressSanitizer and UndefinedBehaviorSanitizer for every target when SORANO_SANITIZE is on.
if(SORANO_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

# Fuzzing builds instrument every target for coverage; the fuzzer programs add the driver.
if(SORANO_BUILD_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
