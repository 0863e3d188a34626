// What the desktop is asked by, in the JavaScript of "osascript".
#pragma once

namespace vantory {

// Its arguments are a question's name and that question's own. No argument becomes part of the script.
//
// Functions of the frameworks are declared here: not every system describes them to scripts. "id" stands for the types
// of Core Foundation too.
inline constexpr const char* kDesktopScript = R"js(
ObjC.import('AppKit');
ObjC.import('UniformTypeIdentifiers');
ObjC.bindFunction('LSSetDefaultRoleHandlerForContentType', ['int', ['id', 'unsigned int', 'id']]);
ObjC.bindFunction('LSCopyDefaultRoleHandlerForContentType', ['id', ['id', 'unsigned int']]);
ObjC.bindFunction('CFMessagePortCreateRemote', ['id', ['id', 'id']]);
ObjC.bindFunction('CFMessagePortSendRequest', ['int', ['id', 'int', 'id', 'double', 'double', 'id', 'id *']]);

const viewer = 2;
const workspace = $.NSWorkspace.sharedWorkspace;
const textOf = object => object.isNil() ? '' : object.js;
const pathOf = url => url.isNil() ? '' : url.path.js;
const applicationFor = address => pathOf(workspace.URLForApplicationToOpenURL($.NSURL.URLWithString(address)));
const fail = text => { throw new Error(text); };

const questions = {
  // Each process is asked as its own menu would; none waits for an answer.
  quit: (...processes) => {
    for (const process of processes) {
      const application = $.NSRunningApplication.runningApplicationWithProcessIdentifier(Number(process));
      if (!application.isNil() && !application.terminate) fail('process ' + process + ' cannot be asked to quit');
    }
    return '';
  },
  find: identifier => pathOf(workspace.URLForApplicationWithBundleIdentifier(identifier)),
  type: extension => {
    const type = $.UTType.typeWithFilenameExtension(extension);
    return type.isNil() ? '' : textOf(type.identifier);
  },
  viewer: type => textOf($.LSCopyDefaultRoleHandlerForContentType($(type), viewer)),
  setViewer: (type, identifier) => {
    const error = $.LSSetDefaultRoleHandlerForContentType($(type), viewer, $(identifier));
    return error === 0 ? '' : fail('error ' + error);
  },
  // A browser that serves as mail program takes no attachment.
  mailProgram: () => {
    const program = applicationFor('mailto:');
    return program === applicationFor('https:') ? '' : program;
  },
  notify: (title, text) => {
    const application = Application.currentApplication();
    application.includeStandardAdditions = true;
    application.displayNotification(text, {withTitle: title});
    return '';
  },
  announce: name => {
    const center = $.NSDistributedNotificationCenter.defaultCenter;
    center.postNotificationNameObjectUserInfoDeliverImmediately(name, $(), $(), true);
    return '';
  },
  // The message's name and arguments travel as a binary property list; the reply "unknown" says that the message is not
  // understood.
  tell: (port, ...message) => {
    const remote = $.CFMessagePortCreateRemote($(), $(port));
    if (remote.isNil()) return 'nobody';
    const data = $.NSPropertyListSerialization.dataWithPropertyListFormatOptionsError($(message), 200, 0, $());
    const reply = Ref();
    const mode = $('kCFRunLoopDefaultMode');
    const error = $.CFMessagePortSendRequest(remote, 0, data, 2, 2, mode, reply);
    if (error !== 0) fail('error ' + error);
    const answer = reply[0];
    return textOf($.NSString.alloc.initWithDataEncoding(answer, 4)) === 'unknown' ? 'unknown' : 'received';
  },
};

function run(all) { return questions[all[0]](...all.slice(1)); }
)js";

}  // namespace vantory
