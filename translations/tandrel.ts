<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1">
<context>
    <name>AboutWindow</name>
    <message>
        <source>Version %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lets your AI see and operate your iPhone, with nothing installed on it. Before anything that could pay, it asks you.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Runs from %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>About Tandrel</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>AppDelegate</name>
    <message>
        <source>This desktop shows no tray icons, so Tandrel&apos;s menu is here. Closing the window leaves Tandrel running; start it again to come back.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ApprovalPrompt</name>
    <message>
        <source>Tandrel: approve a payment</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your AI wants to %1 on your iPhone. The screen shows %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Approve lets this one action through. If the amount or recipient changes before it happens, Tandrel asks again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Deny</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Approve</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The iPhone&apos;s screen with the place of the action</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No answer in %1 s means no</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ApprovalsWindow</name>
    <message>
        <source>Asked</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Approved</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Denied</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No answer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Voided</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Refused</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Withdrawn</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tandrel: approvals</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Approvals</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What Tandrel asked you before payments, and what came of it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The log %1 can&apos;t be read: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>When</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Answer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Why</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No payment has been asked about yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Older records in the log: %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lines of the log that could not be read: %1.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>AppsPage</name>
    <message>
        <source>Connect your AI</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add Tandrel to the AI apps that may use your iPhone. Their other settings stay as they are.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy the text for %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copied</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Or add it yourself:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tandrel is added.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 still points to an older copy of Tandrel.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Replace</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tandrel was added, but its entry has gone from %1&apos;s settings.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add Again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Leave It Out</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Found on this computer.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add to %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not found on this computer.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Restart Claude Desktop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>AI apps can&apos;t start Tandrel&apos;s helper</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It is missing beside this program. Install Tandrel again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The system holds it back because it was downloaded.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Allow It</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This copy of Tandrel may not stay where it is</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>AI apps start it from the folder that it lies in. Move it to your applications first; it opens again from there.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move to Applications</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>BluetoothPage</name>
    <message>
        <source>Bluetooth</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>To the iPhone, Tandrel is a Bluetooth keyboard and pointer. Nothing is installed on the iPhone.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Bluetooth is in the desktop&apos;s settings. In a terminal, “bluetoothctl power on” turns it on.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tandrel may not use Bluetooth yet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Allow it, so that the iPhone can find this computer.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Allow Bluetooth</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Bluetooth is on</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An iPhone can find this computer under the name “%1”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Bluetooth isn&apos;t ready</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Explain</name>
    <message>
        <source>Control is paused. Turn it back on from the Tandrel menu in the menu bar.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The iPhone isn&apos;t connected over Bluetooth. Unlock it and check that Settings › Bluetooth on the iPhone shows Tandrel as Connected.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The iPhone is connected over Bluetooth, but Tandrel can&apos;t tell it apart yet. Unlock it, check AssistiveTouch is on, then test again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No picture from the iPhone. Wake it and unlock it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>More than one iPhone is connected. Unplug or turn off Bluetooth on the ones you don&apos;t want to use.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tandrel&apos;s phone connection isn&apos;t answering. Quit Tandrel and open it again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Something went wrong (%1).</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Notice</name>
    <message>
        <source>Tandrel couldn&apos;t start its phone connection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1. Quit Tandrel and open it again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is running the phone connection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This copy of Tandrel leaves the iPhone to it. Quit it to use this copy.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quit %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The iPhone isn&apos;t sharing its screen</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It&apos;s plugged in. Unlock it, and tap Trust if it asks.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show me</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The iPhone&apos;s cable is unplugged</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Plug the iPhone into this Mac to let your AI see it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Screen Mirroring isn&apos;t on</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>On the iPhone: Control Center › Screen Mirroring › %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Matching the iPhone to its screen</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep it unlocked with AssistiveTouch on.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Match Again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The iPhone isn&apos;t connected over Bluetooth</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unlock it. If it doesn&apos;t reconnect, open Settings › Bluetooth on the iPhone and tap %1 (it may be listed as “%2”).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reconnect</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tandrel is starting</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tandrel&apos;s phone connection is starting.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Bluetooth is switched off for Tandrel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Turn it back on in System Settings › Privacy &amp; Security › Bluetooth.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open Bluetooth Privacy</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Bluetooth is off on this Mac</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Turn it on in Control Center. The iPhone reconnects by itself.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open Bluetooth Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The iPhone&apos;s screen is off</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Wake it and unlock it. Auto-Lock › Never keeps it awake while your AI works.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your iPhone is locked</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unlock it so your AI can use it. Your AI can&apos;t unlock it for you.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Setup isn&apos;t finished</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Paused: your AI can look but not tap</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>iPhone ready</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>OwnerActions</name>
    <message>
        <source>This computer lets a user see video devices through the group &quot;video&quot;: run `sudo usermod -aG video &quot;$USER&quot;` and log in again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Whether Tandrel may use Bluetooth is decided by this computer&apos;s administrator: the system bus must let you talk to org.bluez.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Claude Desktop didn&apos;t restart. Quit it and open it again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Turn Bluetooth on with `bluetoothctl power on`.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing to quit.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quit %1. Reopening Tandrel…</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>OwnerMenu</name>
    <message>
        <source>Test the iPhone…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Setup…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Approvals…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open at login</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>About Tandrel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quit Tandrel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ask me before payments</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ask when unsure</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Resume control</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pause control</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add Tandrel to %1 again…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stop asking before payments?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your AI could then pay, buy, subscribe or send money on your iPhone without asking you first. You can turn this back on in the Tandrel menu.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep Asking</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stop Asking</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PairingPage</name>
    <message>
        <source>Pair the iPhone</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>On the iPhone, open Settings › Bluetooth and tap this name. When it asks, tap Pair.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>close other Bluetooth settings windows while you pair; one that searches can take the iPhone&apos;s answer.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It may be listed as “%1”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The iPhone is connected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It comes back by itself whenever it is near and unlocked.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PhoneTest</name>
    <message>
        <source>Nothing was done on the iPhone.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>USB cable</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1. It can read: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Control is paused</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Control is paused. Turn it back on in the Tandrel menu, then test again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>See the iPhone&apos;s screen</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tandrel can&apos;t see the iPhone yet, so nothing was done on it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The screen is off. Press the iPhone&apos;s side button and unlock it, then test again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The iPhone is locked. Unlock it, then test again. Your AI can&apos;t unlock it for you.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Press Home</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The iPhone didn&apos;t get the key press, so the test stopped here.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move the pointer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The pointer couldn&apos;t be moved, so the test stopped here.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>AssistiveTouch is on</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open Settings by typing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typing didn&apos;t reach the iPhone.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Settings didn&apos;t open. If the iPhone shows a search screen with the wrong letters, set Settings › General › Keyboard › Hardware Keyboard to U.S. and test again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Back to the Home screen</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Some of it didn&apos;t work yet. Fix the part marked above and test again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typing works, but taps won&apos;t until AssistiveTouch is on.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Everything works. Ask your AI something like “Open Settings on my iPhone and tell me which iOS version it has.”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A quick test on the iPhone: Tandrel presses Home, moves the pointer, opens Settings by typing, and goes back Home. Nothing is changed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep the iPhone unlocked. The test takes about 15 seconds.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The pointer didn&apos;t show up, so taps won&apos;t work. On the iPhone, turn on Settings › Accessibility › Touch › AssistiveTouch.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PointerPage</name>
    <message>
        <source>Turn on AssistiveTouch</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Taps need a pointer on the iPhone. Turn on Settings › Accessibility › Touch › AssistiveTouch. A round pointer appears, and you can watch it here.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Moving the pointer…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The pointer wasn&apos;t seen</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move the Pointer Again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>AssistiveTouch is on</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tandrel moved the pointer and saw it move.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The pointer hasn&apos;t been seen yet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Let Tandrel move it from one side of the screen to the other and look for it. Nothing is tapped.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move the Pointer</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ScreenPage</name>
    <message>
        <source>Over the USB cable.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Over AirPlay.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>See the iPhone&apos;s screen</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your AI sees what the iPhone shows. Choose how the picture gets here.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the cable&apos;s picture comes from the iPhone&apos;s video adapter through a capture device; AirPlay&apos;s comes through a receiver program on this computer.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>USB cable</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>AirPlay, without a cable</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The sharpest and quickest picture. Plug the iPhone in, unlock it, and tap Trust if it asks.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>On the iPhone: Control Center › Screen Mirroring › %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tandrel sees the iPhone</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Waiting for the iPhone&apos;s picture</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tandrel may not see video devices</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your user isn&apos;t allowed to open them.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show me how</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Setup</name>
    <message>
        <source>On Linux: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No picture yet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The iPhone&apos;s screen as it is now</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SetupWindow</name>
    <message>
        <source>Bluetooth</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Screen</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pairing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pointer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>AI apps</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Test</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tandrel Setup</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Menu</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Back</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Continue</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Done</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>done</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>open</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TestPage</name>
    <message>
        <source>Test the iPhone</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Test Again</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Tray</name>
    <message>
        <source>Tandrel: %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
