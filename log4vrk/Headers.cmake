# What is installed. The headers in a folder's internal/ are the library's own business; those listed here are included
# by public ones. tests/structure/check_structure.sh holds this list against the tree and against log4vrk.h.
set(LOG4VRK_HEADERS
  format.h
  log.h
  log4vrk.h

  # platform
  platform/I18NConverter.h
  platform/I18NLocale.h
  platform/I18NRuntimeError.h
  platform/I18NString.h
  platform/VRKAssertError.h
  platform/VRKConfigurationFactory.h
  platform/VRKCrypto.h
  platform/VRKExport.h
  platform/VRKFileLockRW.h
  platform/VRKFmDir.h
  platform/VRKFmFile.h
  platform/VRKIDOM.h
  platform/VRKIDOM_DOMImplementation.h
  platform/VRKIDOM_Document.h
  platform/VRKIDOM_Element.h
  platform/VRKIDOM_NamedNodeMap.h
  platform/VRKIDOM_Node.h
  platform/VRKIDOM_NodeList.h
  platform/VRKIDOM_Parser.h
  platform/VRKList.h
  platform/VRKListIterator.h
  platform/VRKOutOfMemoryError.h
  platform/VRKSocketAddress.h
  platform/VRKStdExceptionError.h
  platform/VRKSystemError.h
  platform/VRKThread.h
  platform/VRKThreadCriticalSection.h
  platform/VRKThreadGuard.h
  platform/VRKThreadRWGuard.h
  platform/VRKThrowable.h
  platform/internal/I18NShortAscii.h
  platform/internal/I18NUtf8Buffer.h
  platform/internal/VRKDatagramSocket.h
  platform/internal/VRKFault.h
  platform/internal/VRKJournalSocket.h
  platform/internal/VRKMutex.h
  platform/internal/VRKThreadSafety.h

  # core
  core/LOGAppender.h
  core/LOGAppenderAttachable.h
  core/LOGAppenderAttachableImpl.h
  core/LOGAppenderSkeleton.h
  core/LOGContext.h
  core/LOGDefaultLoggerFactory.h
  core/LOGDefaultRenderer.h
  core/LOGDefaultRepositorySelector.h
  core/LOGDiagnosticContext.h
  core/LOGErrorHandler.h
  core/LOGFieldMacros.h
  core/LOGFilter.h
  core/LOGGuard.h
  core/LOGHashtable.h
  core/LOGHierarchy.h
  core/LOGHierarchyEventListener.h
  core/LOGLayout.h
  core/LOGLevel.h
  core/LOGLocationInfo.h
  core/LOGLogLog.h
  core/LOGLogger.h
  core/LOGLoggerFactory.h
  core/LOGLoggerKey.h
  core/LOGLoggerRepository.h
  core/LOGLoggingEvent.h
  core/LOGMacros.h
  core/LOGManager.h
  core/LOGMessage.h
  core/LOGMutex.h
  core/LOGNDC.h
  core/LOGObject.h
  core/LOGObjectRenderer.h
  core/LOGOptionConverter.h
  core/LOGOptionHandler.h
  core/LOGProvisionNode.h
  core/LOGRendererMap.h
  core/LOGRendererSupport.h
  core/LOGRepositorySelector.h
  core/LOGRootLogger.h
  core/LOGSerializable.h
  core/LOGSourceLocation.h
  core/LOGStack.h
  core/internal/LOGCallScope.h
  core/internal/LOGFields.h
  core/internal/LOGGate.h
  core/internal/LOGLoggerName.h
  core/internal/LOGPackedText.h
  core/internal/LOGStatement.h
  core/internal/LOGStatementControl.h
  core/internal/LOGText.h

  # layouts
  layouts/LOGDate.h
  layouts/LOGDateLayout.h
  layouts/LOGHTMLLayout.h
  layouts/LOGJSONLayout.h
  layouts/LOGPatternLayout.h
  layouts/LOGTTCCLayout.h
  layouts/LOGTimeZone.h
  layouts/LOGXMLLayout.h
  layouts/internal/LOGDateFormat.h

  # appenders
  appenders/LOGAsyncAppender.h
  appenders/LOGBoundedFIFO.h
  appenders/LOGColorConsoleAppender.h
  appenders/LOGConsoleAppender.h
  appenders/LOGCountingQuietWriter.h
  appenders/LOGDenyAllFilter.h
  appenders/LOGDispatcher.h
  appenders/LOGDurableAsyncAppender.h
  appenders/LOGFallbackAppender.h
  appenders/LOGFileAppender.h
  appenders/LOGLevelMatchFilter.h
  appenders/LOGLevelRangeFilter.h
  appenders/LOGOnlyOnceErrorHandler.h
  appenders/LOGQuietWriter.h
  appenders/LOGRateLimitFilter.h
  appenders/LOGRollingFileAppender.h
  appenders/LOGStringMatchFilter.h
  appenders/LOGTimeRollingFileAppender.h
  appenders/LOGWriter.h
  appenders/LOGWriterAppender.h
  appenders/internal/LOGQueueProgress.h

  # net
  net/LOGJournalAppender.h
  net/LOGLocalUDPAppender.h
  net/LOGSyslogAppender.h
  net/LOGSyslogQuietWriter.h
  net/LOGSyslogWriter.h
  net/LOGTCPSocketAppender.h

  # config
  config/LOG4VRKConfigurator.h
  config/LOGConfigurator.h
  config/LOGDOMConfigurator.h
  config/LOGDocumentCheck.h
  config/LOGFileWatchdog.h
  config/LOGXMLWatchdog.h

  # testing
  testing/LOGCapture.h
  testing/matchers.h
)
