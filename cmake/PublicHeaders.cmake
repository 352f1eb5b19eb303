# What is installed besides include/dataModule, and nothing else: the headers of classes that the system names, and the
# bases that these need. Everything else under src/ is included with quotes and free to change.

set(DATAMODULE_PUBLIC_HEADERS_common
  CRC32Util.h
  Event.h
  EventIdGenerator.h
  FileUtil.h
  RecordEvent.h # the base of the events
  Thread.h
  TimeUtil.h
  # The events, several in a header; each has one of its own name too, which passes on to it.
  FactoryPictureEvents.h
  SoundEvents.h
  UserPictureEvents.h
)

set(DATAMODULE_PUBLIC_HEADERS_fileOperator
  AbstractFileOperator.h
  TableOperator.h    # the base of the categories: what is done with a table
  CategoryOperator.h # the same with the category's record type
  factoryPicture/FactoryWhiteBalance.h # the base of the two white balances of the factory
)
# And each category's own.
file(GLOB DATAMODULE_CATEGORY_HEADERS CONFIGURE_DEPENDS RELATIVE ${CMAKE_SOURCE_DIR}/src/fileOperator
  ${CMAKE_SOURCE_DIR}/src/fileOperator/*/File[UF]*.h)
list(FILTER DATAMODULE_CATEGORY_HEADERS INCLUDE REGEX "^[a-zA-Z]+/File(User|Factory)(Picture|Sound)[A-Za-z0-9]+\\.h$")
list(APPEND DATAMODULE_PUBLIC_HEADERS_fileOperator ${DATAMODULE_CATEGORY_HEADERS})
