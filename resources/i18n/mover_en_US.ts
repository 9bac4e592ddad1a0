<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US" sourcelanguage="zh_CN">
<context>
    <name>AddControlsWidget</name>
    <message>
        <source>添加控制器</source>
        <translation>Add Controller</translation>
    </message>
    <message>
        <source>直线位移台</source>
        <translation>Line Control</translation>
    </message>
    <message>
        <source>旋转位移台</source>
        <translation>Rotation Control</translation>
    </message>
    <message>
        <source>角位移台</source>
        <translation>Angular control</translation>
    </message>
    <message>
        <source>升降移台</source>
        <translation>Lifting Control</translation>
    </message>
    <message>
        <source>设备型号：</source>
        <translation>modelName:</translation>
    </message>
    <message>
        <source>没有此类位移台的型号</source>
        <translation>No model of this type</translation>
    </message>
    <message>
        <source>设备序号：</source>
        <translation>Axis Number:</translation>
    </message>
    <message>
        <source>确定</source>
        <translation>confirm</translation>
    </message>
    <message>
        <source>参数配置错误!请重试。</source>
        <translation>Parameter configuration error! Please try again.</translation>
    </message>
    <message>
        <source>关闭</source>
        <translation>Close</translation>
    </message>
</context>
<context>
    <name>AxisOptions</name>
    <message>
        <source>请匹配位移台实际行程进行设置！</source>
        <translation>Please set according to the 
actual travel of the stage!</translation>
    </message>
    <message>
        <source>位移量超出范围！[%1,%2]</source>
        <translation>relative displacement out of range! [%1, %2]</translation>
    </message>
</context>
<context>
    <name>BoardAxesWidget</name>
    <message>
        <source>名称：</source>
        <translation>Name:</translation>
    </message>
    <message>
        <source>轴</source>
        <translation>Axis</translation>
    </message>
    <message>
        <source>位移台型号</source>
        <translation>Stage model</translation>
    </message>
    <message>
        <source>控制板的数值</source>
        <translation>Values of the board</translation>
    </message>
    <message>
        <source>型号的脉冲数按控制板的每毫米步数换算。不选型号的轴可以以后用“+”添加。</source>
        <translation>The pulses of a model follow the steps per mm of the board. An axis without a model can be added later with &quot;+&quot;.</translation>
    </message>
    <message>
        <source>按型号调整控制板…</source>
        <translation>Fit the board to the models…</translation>
    </message>
    <message>
        <source>不指定</source>
        <translation>none</translation>
    </message>
    <message>
        <source>%1 步/mm，行程 %2 mm
最高 %3 mm/s，由 $%4 决定</source>
        <translation>%1 steps/mm, travel %2 mm
at most %3 mm/s, set by $%4</translation>
    </message>
</context>
<context>
    <name>BoardSettingsWidget</name>
    <message>
        <source>备份…</source>
        <translation>Back up…</translation>
    </message>
    <message>
        <source>从备份恢复…</source>
        <translation>Restore…</translation>
    </message>
    <message>
        <source>放弃</source>
        <translation>Discard</translation>
    </message>
    <message>
        <source>写入控制板</source>
        <translation>Write to the board</translation>
    </message>
    <message>
        <source>控制板已写入参数</source>
        <translation>The board has taken the settings</translation>
    </message>
    <message>
        <source>与控制板的差异：按“写入控制板”之前不会改变任何参数。</source>
        <translation>Differences to the board: nothing is changed before &quot;Write to the board&quot; is pressed.</translation>
    </message>
    <message>
        <source>没有差异。</source>
        <translation>No differences.</translation>
    </message>
    <message>
        <source>控制板现在的参数。</source>
        <translation>The settings of the board as they are.</translation>
    </message>
    <message>
        <source>参数</source>
        <translation>Setting</translation>
    </message>
    <message>
        <source>现在</source>
        <translation>Now</translation>
    </message>
    <message>
        <source>新值</source>
        <translation>New</translation>
    </message>
    <message>
        <source>备份控制板参数</source>
        <translation>Back up the settings of the board</translation>
    </message>
    <message>
        <source>参数已备份到 %1</source>
        <translation>The settings are backed up in %1</translation>
    </message>
    <message>
        <source>无法写入 %1</source>
        <translation>%1 cannot be written</translation>
    </message>
    <message>
        <source>恢复控制板参数</source>
        <translation>Restore the settings of the board</translation>
    </message>
    <message>
        <source>%1 不是参数备份</source>
        <translation>%1 is no back-up of settings</translation>
    </message>
</context>
<context>
    <name>CompensationModel</name>
    <message>
        <source>+期望位置</source>
        <translation>+Expected</translation>
    </message>
    <message>
        <source>+实际位置</source>
        <translation>+Actual</translation>
    </message>
    <message>
        <source>-期望位置</source>
        <translation>-Expected</translation>
    </message>
    <message>
        <source>-实际位置</source>
        <translation>-Actual</translation>
    </message>
</context>
<context>
    <name>ConnectionWidget</name>
    <message>
        <source>连接设备</source>
        <translation>Connect Device</translation>
    </message>
    <message>
        <source>关闭</source>
        <translation>Close</translation>
    </message>
    <message>
        <source>串口选择：</source>
        <translation>Selected COM</translation>
    </message>
    <message>
        <source>连接</source>
        <translation>Connect</translation>
    </message>
    <message>
        <source>断开</source>
        <translation>Disconnect</translation>
    </message>
    <message>
        <source>设备已连接</source>
        <translation>Device connected</translation>
    </message>
    <message>
        <source>设备已断开</source>
        <translation>The device has been disconnected</translation>
    </message>
    <message>
        <source>打开设备失败(err:%1)</source>
        <translation>Failed to open the device (err: %1).</translation>
    </message>
    <message>
        <source>控制器设置</source>
        <translation>Controller set-up</translation>
    </message>
</context>
<context>
    <name>ControllerSetupWidget</name>
    <message>
        <source>控制器设置</source>
        <translation>Controller set-up</translation>
    </message>
    <message>
        <source>关闭</source>
        <translation>Close</translation>
    </message>
    <message>
        <source>运动控制库</source>
        <translation>Motion library</translation>
    </message>
    <message>
        <source>重新启动程序</source>
        <translation>Restart the program</translation>
    </message>
    <message>
        <source>Grbl 控制板</source>
        <translation>Grbl boards</translation>
    </message>
    <message>
        <source>添加…</source>
        <translation>Add…</translation>
    </message>
    <message>
        <source>打开…</source>
        <translation>Open…</translation>
    </message>
    <message>
        <source>移除</source>
        <translation>Remove</translation>
    </message>
    <message>
        <source>控制板接在哪个串口？</source>
        <translation>Which port is the board plugged into?</translation>
    </message>
    <message>
        <source>串口：</source>
        <translation>Port:</translation>
    </message>
    <message>
        <source>刷新</source>
        <translation>Refresh</translation>
    </message>
    <message>
        <source>打开串口可能使控制板复位：请确认它没有在加工或移动。询问时不会有轴移动。</source>
        <translation>Opening the port may reset the board: make sure that it is not moving anything. Asking moves no axis.</translation>
    </message>
    <message>
        <source>返回</source>
        <translation>Back</translation>
    </message>
    <message>
        <source>询问控制板</source>
        <translation>Ask the board</translation>
    </message>
    <message>
        <source>位移台</source>
        <translation>Stages</translation>
    </message>
    <message>
        <source>第一次移动</source>
        <translation>First move</translation>
    </message>
    <message>
        <source>控制板参数</source>
        <translation>Settings</translation>
    </message>
    <message>
        <source>停止</source>
        <translation>Stop</translation>
    </message>
    <message>
        <source>保存</source>
        <translation>Save</translation>
    </message>
    <message>
        <source>没有这个串口，或者它不是串口。请检查 USB 线，然后按“刷新”。</source>
        <translation>There is no such port, or it is no serial port. Check the USB cable, then press &quot;Refresh&quot;.</translation>
    </message>
    <message>
        <source>串口被另一个程序占用。请关闭那个程序，然后再询问。</source>
        <translation>Another program is using the port. Close that program, then ask again.</translation>
    </message>
    <message>
        <source>没有打开串口的权限。请将用户加入 dialout 组（sudo usermod -aG dialout 用户名），然后重新登录。</source>
        <translation>You may not open the port. Add your user to the group dialout (sudo usermod -aG dialout USER), then log in again.</translation>
    </message>
    <message>
        <source>这块控制板已经连接。请先在“连接设备”中断开。</source>
        <translation>This board is connected. Disconnect it in &quot;Connect Device&quot; first.</translation>
    </message>
    <message>
        <source>没有应答。请检查控制板的电源，以及选择的串口是否正确。</source>
        <translation>No answer. Check the power of the board, and whether this is its port.</translation>
    </message>
    <message>
        <source>应答无法读懂：控制板的波特率不是 115200。请在控制板的固件中改为 115200。</source>
        <translation>The answer is unreadable: the baud rate of the board is not 115200. Set it to 115200 in its firmware.</translation>
    </message>
    <message>
        <source>有设备应答，但它不是 Grbl 控制板。请选择另一个串口。</source>
        <translation>Something answers, but it is no Grbl board. Choose another port.</translation>
    </message>
    <message>
        <source>控制板已拔出。请重新插上，返回后再询问。</source>
        <translation>The board has been unplugged. Plug it in again, go back and ask again.</translation>
    </message>
    <message>
        <source>另一个正在运行的程序打开了控制器设置：这里只能查看。</source>
        <translation>Another running program has the controller set-up open: here you can only look.</translation>
    </message>
    <message>
        <source>无法读取控制器文件（%1），它已保留为 %2</source>
        <translation>The file of controllers cannot be read (%1); it is kept as %2</translation>
    </message>
    <message>
        <source>无法写入 %1</source>
        <translation>%1 cannot be written</translation>
    </message>
    <message>
        <source>有限位开关闭合：请用手将该轴移离开关，再解锁</source>
        <translation>A limit switch is closed: move the axis off it by hand, then unlock</translation>
    </message>
    <message>
        <source>控制板拒绝（%1）</source>
        <translation>The board has refused (%1)</translation>
    </message>
    <message>
        <source>厂家的运动库</source>
        <translation>The maker&apos;s library</translation>
    </message>
    <message>
        <source>模拟控制器</source>
        <translation>Simulated controller</translation>
    </message>
    <message>
        <source>正在使用启动时指定的库：%1</source>
        <translation>In use is the library that was named at the start: %1</translation>
    </message>
    <message>
        <source>下次启动时使用：</source>
        <translation>To be used at the next start:</translation>
    </message>
    <message>
        <source>%1（正在使用）</source>
        <translation>%1 (in use)</translation>
    </message>
    <message>
        <source>%1（未找到）</source>
        <translation>%1 (not found)</translation>
    </message>
    <message>
        <source>自动：%1</source>
        <translation>Automatic: %1</translation>
    </message>
    <message>
        <source>重新启动程序后生效。</source>
        <translation>Takes effect when the program is restarted.</translation>
    </message>
    <message>
        <source>启动时的 --library 或 MOVER_LIBRARY 优先于这里的选择。</source>
        <translation>--library or MOVER_LIBRARY at the start come before what is chosen here.</translation>
    </message>
    <message>
        <source>重新启动将停止各轴并断开控制器，
是否继续？</source>
        <translation>Restarting stops the axes and disconnects
the controller. Continue?</translation>
    </message>
    <message>
        <source>移除 %1 ？
控制板自身的参数保持不变。</source>
        <translation>Remove %1?
The settings in the board stay as they are.</translation>
    </message>
    <message>
        <source>没有序列号</source>
        <translation>no serial number</translation>
    </message>
    <message>
        <source>序列号 %1</source>
        <translation>serial number %1</translation>
    </message>
    <message>
        <source>，USB 插座 %1</source>
        <translation>, USB socket %1</translation>
    </message>
    <message>
        <source>
序列号不能区分它：控制板须一直插在这个插座上。</source>
        <translation>
The serial number does not tell it apart: the board has to stay in this socket.</translation>
    </message>
    <message>
        <source>从列表中选择，或输入串口的名称，例如 /dev/ttyUSB0 或 COM3。</source>
        <translation>Choose from the list, or type the name of a port, such as /dev/ttyUSB0 or COM3.</translation>
    </message>
    <message>
        <source>这个串口上已经设置了 %1。</source>
        <translation>%1 is already set up at this port.</translation>
    </message>
    <message>
        <source>没有 Grbl 运动库：%1</source>
        <translation>The library for Grbl boards is missing: %1</translation>
    </message>
    <message>
        <source>正在询问，最多需要 10 秒…</source>
        <translation>Asking, which takes up to 10 s…</translation>
    </message>
    <message>
        <source>%1，%2 个轴，%3 个参数</source>
        <translation>%1, axes: %2, settings: %3</translation>
    </message>
    <message>
        <source>两个轴有相同的字母</source>
        <translation>Two axes have the same letter</translation>
    </message>
    <message>
        <source>已保存</source>
        <translation>Saved</translation>
    </message>
</context>
<context>
    <name>CycleOperationWidget</name>
    <message>
        <source>  循环模式</source>
        <translation>Loop running mode</translation>
    </message>
    <message>
        <source>相对位移：</source>
        <translation>Travel</translation>
    </message>
    <message>
        <source>速度：</source>
        <translation>Speed</translation>
    </message>
    <message>
        <source>加速度：</source>
        <translation>Acc</translation>
    </message>
    <message>
        <source>循环次数：</source>
        <translation>Loop count</translation>
    </message>
    <message>
        <source>停留时间：</source>
        <translation>Res time</translation>
    </message>
    <message>
        <source>负方向开始循环运行</source>
        <translation>The loop starts in the negative direction</translation>
    </message>
    <message>
        <source>正方向开始循环运行</source>
        <translation>The loop starts in the positive direction</translation>
    </message>
    <message>
        <source>停止运行</source>
        <translation>Stop runing</translation>
    </message>
    <message>
        <source>关闭</source>
        <translation>Close</translation>
    </message>
</context>
<context>
    <name>DebugWidget</name>
    <message>
        <source>工程控制台</source>
        <translation>Engineering console</translation>
    </message>
    <message>
        <source>轴(&amp;A)</source>
        <translation>&amp;Axis</translation>
    </message>
    <message>
        <source>输入(&amp;I)</source>
        <translation>&amp;Input</translation>
    </message>
    <message>
        <source>不是数字，已按 0 发送</source>
        <translation>Not a number: 0 was sent</translation>
    </message>
    <message>
        <source>结果(&amp;R)</source>
        <translation>&amp;Result</translation>
    </message>
    <message>
        <source>状态(&amp;S)</source>
        <translation>&amp;Status</translation>
    </message>
    <message>
        <source>命令</source>
        <translation>Commands</translation>
    </message>
    <message>
        <source>运动</source>
        <translation>Motion</translation>
    </message>
    <message>
        <source>速度</source>
        <translation>Speed</translation>
    </message>
    <message>
        <source>位置</source>
        <translation>Position</translation>
    </message>
    <message>
        <source>JOG</source>
        <translation>Jog</translation>
    </message>
    <message>
        <source>循环</source>
        <translation>Loop</translation>
    </message>
    <message>
        <source>标识</source>
        <translation>Identity</translation>
    </message>
    <message>
        <source>触发</source>
        <translation>Trigger</translation>
    </message>
    <message>
        <source>设备</source>
        <translation>Device</translation>
    </message>
    <message>
        <source>丢失的心跳：</source>
        <translation>Missed beats</translation>
    </message>
    <message>
        <source>电机参数</source>
        <translation>Motor Param</translation>
    </message>
    <message>
        <source>位移台</source>
        <translation>Stage</translation>
    </message>
    <message>
        <source>型号名称：</source>
        <translation>Model name</translation>
    </message>
    <message>
        <source>序列号：</source>
        <translation>Serial NO.</translation>
    </message>
    <message>
        <source>位移台类型：</source>
        <translation>Stage type</translation>
    </message>
    <message>
        <source>直线</source>
        <translation>Linear</translation>
    </message>
    <message>
        <source>旋转</source>
        <translation>Rotation</translation>
    </message>
    <message>
        <source>角度</source>
        <translation>Angle</translation>
    </message>
    <message>
        <source>垂直</source>
        <translation>Vertical</translation>
    </message>
    <message>
        <source>单位类型：</source>
        <translation>Unit type</translation>
    </message>
    <message>
        <source>一圈的脉冲数：</source>
        <translation>Pulses/cycle</translation>
    </message>
    <message>
        <source>导程：</source>
        <translation>Lead</translation>
    </message>
    <message>
        <source>电机相数：</source>
        <translation>Motor phases</translation>
    </message>
    <message>
        <source>修改日期：</source>
        <translation>Modification date</translation>
    </message>
    <message>
        <source>行程与速度</source>
        <translation>Travel and speed</translation>
    </message>
    <message>
        <source>运动方向：</source>
        <translation>Moving direction</translation>
    </message>
    <message>
        <source>正向</source>
        <translation>Positive</translation>
    </message>
    <message>
        <source>负向</source>
        <translation>Negative</translation>
    </message>
    <message>
        <source>最小位置：</source>
        <translation>Minimum position</translation>
    </message>
    <message>
        <source>最大位置：</source>
        <translation>Maximum position</translation>
    </message>
    <message>
        <source>最大速度：</source>
        <translation>Maximum speed</translation>
    </message>
    <message>
        <source>最大加速度：</source>
        <translation>Maximum acceleration</translation>
    </message>
    <message>
        <source>回原点的速度：</source>
        <translation>Reset speed</translation>
    </message>
    <message>
        <source>摇杆最大速度：</source>
        <translation>Maximum rocker speed</translation>
    </message>
    <message>
        <source>回程差：</source>
        <translation>Backlash</translation>
    </message>
    <message>
        <source>限位与零点</source>
        <translation>Limits and zero</translation>
    </message>
    <message>
        <source>正限位极性：</source>
        <translation>P-LSP</translation>
    </message>
    <message>
        <source>低电平</source>
        <translation>Low level</translation>
    </message>
    <message>
        <source>高电平</source>
        <translation>High level</translation>
    </message>
    <message>
        <source>负限位极性：</source>
        <translation>N-LSP</translation>
    </message>
    <message>
        <source>零点位极性：</source>
        <translation>Z-PSP</translation>
    </message>
    <message>
        <source>限位方向：</source>
        <translation>Limiting direction</translation>
    </message>
    <message>
        <source>光耦顺序：</source>
        <translation>Opto order</translation>
    </message>
    <message>
        <source>光耦数量：</source>
        <translation>Opto count</translation>
    </message>
    <message>
        <source>零点光耦宽度：</source>
        <translation>Zero opto width</translation>
    </message>
    <message>
        <source>读出参数</source>
        <translation>ReadParam</translation>
    </message>
    <message>
        <source>写入参数</source>
        <translation>WriteParam</translation>
    </message>
    <message>
        <source>位置补偿</source>
        <translation>Pos Conpen</translation>
    </message>
    <message>
        <source>读取补偿表</source>
        <translation>Read table</translation>
    </message>
    <message>
        <source>写入补偿表</source>
        <translation>Write table</translation>
    </message>
    <message>
        <source>粘贴</source>
        <translation>Paste</translation>
    </message>
    <message>
        <source>清空表格</source>
        <translation>Clear table</translation>
    </message>
    <message>
        <source>启用补偿</source>
        <translation>Compensation on</translation>
    </message>
    <message>
        <source>关闭补偿</source>
        <translation>Compensation off</translation>
    </message>
    <message>
        <source>识别芯片</source>
        <translation>ID chip</translation>
    </message>
    <message>
        <source>擦除位移台识别芯片中的全部参数。擦除后位移台不再被自动识别，直到重新写入电机参数。</source>
        <translation>Erases all parameters in the identification chip of the stage. The stage is then no longer detected until motor parameters are written again.</translation>
    </message>
    <message>
        <source>轴(&amp;X)</source>
        <translation>A&amp;xis</translation>
    </message>
    <message>
        <source>擦除芯片</source>
        <translation>Erase chip</translation>
    </message>
    <message>
        <source>写入电机参数失败：error（%1）</source>
        <translation>Failed to write motor parameters: error (%1)</translation>
    </message>
    <message>
        <source>写入电机参数成功</source>
        <translation>Write motor parameters successfully</translation>
    </message>
    <message>
        <source>提示</source>
        <translation>Message</translation>
    </message>
    <message>
        <source>写入中，请等待控制器状态指示灯变绿后再进行其他操作！</source>
        <translation>Writing. Please wait until the status light of the controller turns green before any other operation!</translation>
    </message>
    <message>
        <source>读取电机参数失败：error（%1）</source>
        <translation>Failed to read motor parameters: error (%1)</translation>
    </message>
    <message>
        <source>位置补偿表</source>
        <translation>Position compensation table</translation>
    </message>
</context>
<context>
    <name>DeviceParamWidget</name>
    <message>
        <source>外部输入输出</source>
        <translation>External I/O</translation>
    </message>
    <message>
        <source>输入有效</source>
        <translation>Enable input</translation>
    </message>
    <message>
        <source>输出有效</source>
        <translation>Enable output</translation>
    </message>
    <message>
        <source>确认</source>
        <translation>confirm</translation>
    </message>
    <message>
        <source>位移台型号配置</source>
        <translation>Motor Stage Model Config</translation>
    </message>
    <message>
        <source>型号：</source>
        <translation>Model</translation>
    </message>
    <message>
        <source>配置文件：</source>
        <translation>Config file</translation>
    </message>
    <message>
        <source>写入</source>
        <translation>write</translation>
    </message>
    <message>
        <source>选择配置文件</source>
        <translation>Choose the config file</translation>
    </message>
</context>
<context>
    <name>DriveParamWidget</name>
    <message>
        <source>相对位移：</source>
        <translation>Travel</translation>
    </message>
    <message>
        <source>速度：</source>
        <translation>Speed</translation>
    </message>
    <message>
        <source>加速度：</source>
        <translation>Acc</translation>
    </message>
    <message>
        <source>使用相对位移</source>
        <translation>Use travel</translation>
    </message>
    <message>
        <source>确认</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>还原</source>
        <translation>Restore</translation>
    </message>
</context>
<context>
    <name>EventWords</name>
    <message>
        <source>%1 移动</source>
        <translation>%1 moves</translation>
    </message>
    <message>
        <source>%1 正向驱动</source>
        <translation>%1 drives +</translation>
    </message>
    <message>
        <source>%1 负向驱动</source>
        <translation>%1 drives −</translation>
    </message>
    <message>
        <source>%1 正向点动</source>
        <translation>%1 jogs +</translation>
    </message>
    <message>
        <source>%1 负向点动</source>
        <translation>%1 jogs −</translation>
    </message>
    <message>
        <source>%1 正向循环</source>
        <translation>%1 loops +</translation>
    </message>
    <message>
        <source>%1 负向循环</source>
        <translation>%1 loops −</translation>
    </message>
    <message>
        <source>%1 开始回零</source>
        <translation>%1 starts homing</translation>
    </message>
    <message>
        <source>%1 停止指令</source>
        <translation>%1 is told to stop</translation>
    </message>
    <message>
        <source>%1 负限位光耦失效</source>
        <translation>%1 negative opto-coupler failed</translation>
    </message>
    <message>
        <source>%1 原点光耦失效</source>
        <translation>%1 origin opto-coupler failed</translation>
    </message>
    <message>
        <source>%1 正限位光耦失效</source>
        <translation>%1 positive opto-coupler failed</translation>
    </message>
    <message>
        <source>%1（控制台）</source>
        <translation>%1 (console)</translation>
    </message>
    <message>
        <source>%1（全部停止）</source>
        <translation>%1 (stop all)</translation>
    </message>
    <message>
        <source>%1 已到位</source>
        <translation>%1 arrived</translation>
    </message>
    <message>
        <source>%1 已停止</source>
        <translation>%1 stopped</translation>
    </message>
    <message>
        <source>%1 已回零</source>
        <translation>%1 homed</translation>
    </message>
    <message>
        <source>%1 到达正限位</source>
        <translation>%1 positive limit</translation>
    </message>
    <message>
        <source>%1 到达负限位</source>
        <translation>%1 negative limit</translation>
    </message>
    <message>
        <source>%1 被拒绝：%2</source>
        <translation>%1 was refused: %2</translation>
    </message>
    <message>
        <source>连接中断</source>
        <translation>Link lost</translation>
    </message>
    <message>
        <source>%1 连接中断</source>
        <translation>%1 link lost</translation>
    </message>
    <message>
        <source>%1 秒后恢复连接</source>
        <translation>Link back after %1 s</translation>
    </message>
    <message>
        <source>%1（序列）</source>
        <translation>%1 (sequence)</translation>
    </message>
    <message>
        <source>第 %1 步：%2</source>
        <translation>Step %1: %2</translation>
    </message>
</context>
<context>
    <name>FirstMoveWidget</name>
    <message>
        <source>轴：</source>
        <translation>Axis:</translation>
    </message>
    <message>
        <source>解锁</source>
        <translation>Unlock</translation>
    </message>
    <message>
        <source>1. 方向和距离</source>
        <translation>1. Direction and distance</translation>
    </message>
    <message>
        <source>按住：− 1 mm</source>
        <translation>Hold: − 1 mm</translation>
    </message>
    <message>
        <source>按住：+ 1 mm</source>
        <translation>Hold: + 1 mm</translation>
    </message>
    <message>
        <source>方向正确</source>
        <translation>Right direction</translation>
    </message>
    <message>
        <source>实测距离：</source>
        <translation>Measured (mm):</translation>
    </message>
    <message>
        <source>建议参数…</source>
        <translation>Propose settings…</translation>
    </message>
    <message>
        <source>2. 限位开关</source>
        <translation>2. Limit switches</translation>
    </message>
    <message>
        <source>用手依次按下每个限位开关：只有对应的轴应显示“闭合”。</source>
        <translation>Press each limit switch by hand: only its own axis should say &quot;closed&quot;.</translation>
    </message>
    <message>
        <source>反转开关信号…</source>
        <translation>Invert the switches…</translation>
    </message>
    <message>
        <source>3. 回零</source>
        <translation>3. Homing</translation>
    </message>
    <message>
        <source>回零</source>
        <translation>Home</translation>
    </message>
    <message>
        <source>换一个方向…</source>
        <translation>The other way…</translation>
    </message>
    <message>
        <source>打开回零…</source>
        <translation>Switch homing on…</translation>
    </message>
    <message>
        <source>没有应答</source>
        <translation>no answer</translation>
    </message>
    <message>
        <source>已锁定</source>
        <translation>locked</translation>
    </message>
    <message>
        <source>静止</source>
        <translation>at rest</translation>
    </message>
    <message>
        <source>忙</source>
        <translation>busy</translation>
    </message>
    <message>
        <source>位置 %1 mm，%2</source>
        <translation>Position %1 mm, %2</translation>
    </message>
    <message>
        <source>控制板走了 %1 mm</source>
        <translation>The board went %1 mm</translation>
    </message>
    <message>
        <source>松开即停止，最多走 1 mm</source>
        <translation>Stops when released, after 1 mm at most</translation>
    </message>
    <message>
        <source>闭合</source>
        <translation>closed</translation>
    </message>
    <message>
        <source>断开</source>
        <translation>open</translation>
    </message>
    <message>
        <source>控制板的回零没有打开（$22=0）。没有限位开关时保持关闭。</source>
        <translation>Homing is off ($22=0). Leave it off if there are no limit switches.</translation>
    </message>
    <message>
        <source>%1 轴已回零。</source>
        <translation>Axis %1 is homed.</translation>
    </message>
    <message>
        <source>%1 轴朝 %2 方向寻找限位开关（$23）。</source>
        <translation>Axis %1 looks for its switch towards %2 ($23).</translation>
    </message>
    <message>
        <source>回零将移动 %1 轴，直到碰到限位开关。
行程内是否没有障碍？</source>
        <translation>Homing moves %1 until the limit switches are hit.
Is the way free?</translation>
    </message>
</context>
<context>
    <name>HelpWidget</name>
    <message>
        <source>帮助</source>
        <translation>Help</translation>
    </message>
    <message>
        <source>使用手册：</source>
        <translation>Manual:</translation>
    </message>
    <message>
        <source>二次开发：</source>
        <translation>Development:</translation>
    </message>
    <message>
        <source>软件版本：</source>
        <translation>Software version:</translation>
    </message>
    <message>
        <source>嵌入式版本：</source>
        <translation>MCU version:</translation>
    </message>
    <message>
        <source>查看</source>
        <translation>view Manual</translation>
    </message>
    <message>
        <source>查看 C++ SDK</source>
        <translation>view C++ SDK</translation>
    </message>
    <message>
        <source>查看 LabVIew SDK</source>
        <translation>view LabView SDK</translation>
    </message>
    <message>
        <source>查看C# SDK</source>
        <translation>view C# SDK</translation>
    </message>
    <message>
        <source>查看Python SDK</source>
        <translation>view Python SDK</translation>
    </message>
    <message>
        <source>了解更多详细信息</source>
        <translation>Learn more</translation>
    </message>
    <message>
        <source>关闭</source>
        <translation>Close</translation>
    </message>
    <message>
        <source>运动控制库：</source>
        <translation>Motion library:</translation>
    </message>
    <message>
        <source>模拟控制器</source>
        <translation>Simulated controller</translation>
    </message>
</context>
<context>
    <name>HistoryWidget</name>
    <message>
        <source>参数历史</source>
        <translation>Parameter history</translation>
    </message>
    <message>
        <source>快照</source>
        <translation>Snapshots</translation>
    </message>
    <message>
        <source>拍摄快照</source>
        <translation>Take snapshot</translation>
    </message>
    <message>
        <source>时间</source>
        <translation>Time</translation>
    </message>
    <message>
        <source>控制器</source>
        <translation>Controller</translation>
    </message>
    <message>
        <source>轴</source>
        <translation>Axis</translation>
    </message>
    <message>
        <source>原因</source>
        <translation>Why</translation>
    </message>
    <message>
        <source>还没有快照。连接控制器后，每个轴的参数会自动保存在这里。</source>
        <translation>No snapshots yet. Once a controller is connected, the parameters of each axis are kept here by themselves.</translation>
    </message>
    <message>
        <source>差异</source>
        <translation>Differences</translation>
    </message>
    <message>
        <source>只看不同</source>
        <translation>Changed only</translation>
    </message>
    <message>
        <source>比较对象</source>
        <translation>Compare with</translation>
    </message>
    <message>
        <source>参数</source>
        <translation>Field</translation>
    </message>
    <message>
        <source>导入…</source>
        <translation>Import …</translation>
    </message>
    <message>
        <source>导出…</source>
        <translation>Export …</translation>
    </message>
    <message>
        <source>恢复…</source>
        <translation>Restore …</translation>
    </message>
    <message>
        <source>快照未能写入磁盘，将随下一个快照一起保存。</source>
        <translation>The snapshot could not be written to the disk. It will be saved with the next one.</translation>
    </message>
    <message>
        <source>该文件不是参数历史。</source>
        <translation>This file is no parameter history.</translation>
    </message>
    <message>
        <source>已导入 %1 个快照。</source>
        <translation>%1 snapshots imported.</translation>
    </message>
    <message>
        <source>导入的快照未能写入磁盘。</source>
        <translation>The imported snapshots could not be written to the disk.</translation>
    </message>
    <message>
        <source>已导出到 %1</source>
        <translation>Exported to %1</translation>
    </message>
    <message>
        <source>无法写入 %1</source>
        <translation>%1 could not be written</translation>
    </message>
    <message>
        <source>以下文件已损坏或由较新版本写成，已另存保留：%1</source>
        <translation>Damaged or of a later version, and kept aside as: %1</translation>
    </message>
    <message>
        <source>所有轴</source>
        <translation>All axes</translation>
    </message>
    <message>
        <source>控制器当前值</source>
        <translation>Controller now</translation>
    </message>
    <message>
        <source>%2 项中有 %1 项不同。恢复前会先保存快照。</source>
        <translation>%1 of %2 fields differ. Restoring keeps a snapshot first.</translation>
    </message>
    <message>
        <source>正在读取控制器…</source>
        <translation>Reading the controller …</translation>
    </message>
    <message>
        <source>该控制器的这个轴未连接。</source>
        <translation>This axis of this controller is not connected.</translation>
    </message>
    <message>
        <source>%1：%2 → %3</source>
        <translation>%1: %2 → %3</translation>
    </message>
    <message>
        <source>另有 %1 项</source>
        <translation>and %1 more</translation>
    </message>
    <message>
        <source>控制器的值与该快照相同，无需恢复。</source>
        <translation>The controller has the values of this snapshot already.</translation>
    </message>
    <message>
        <source>要把 %1 恢复为 %2 的快照吗？将更改：
%3</source>
        <translation>Restore %1 to the snapshot of %2? This changes:
%3</translation>
    </message>
    <message>
        <source>未能读取控制器的当前参数，没有写入任何内容。</source>
        <translation>What the controller has now could not be read. Nothing was written.</translation>
    </message>
    <message>
        <source>未能保存恢复前的快照，没有写入任何内容。</source>
        <translation>The snapshot before the restore could not be saved. Nothing was written.</translation>
    </message>
    <message>
        <source>恢复过程中控制器已断开，请重新连接后检查参数。</source>
        <translation>The controller was disconnected during the restore. Connect it again and check the parameters.</translation>
    </message>
    <message>
        <source>已恢复，并已从控制器读回确认。</source>
        <translation>Restored, and confirmed by reading it back.</translation>
    </message>
    <message>
        <source>以下参数未生效：%1</source>
        <translation>These did not take effect: %1</translation>
    </message>
    <message>
        <source>导出快照</source>
        <translation>Export snapshots</translation>
    </message>
    <message>
        <source>导入快照</source>
        <translation>Import snapshots</translation>
    </message>
    <message>
        <source>该文件已损坏，只导入了其中完好的 %1 个快照。</source>
        <translation>The file is damaged. Only the %1 snapshots that are whole were imported.</translation>
    </message>
    <message>
        <source>正在导出 …</source>
        <translation>Exporting …</translation>
    </message>
    <message>
        <source>正在导入 …</source>
        <translation>Importing …</translation>
    </message>
    <message>
        <source>该轴正由序列使用，没有写入任何内容。</source>
        <translation>The axis is in use by a sequence. Nothing was written.</translation>
    </message>
</context>
<context>
    <name>JogParamWidget</name>
    <message>
        <source>步长：</source>
        <translation>Step</translation>
    </message>
    <message>
        <source>次数：</source>
        <translation>Count</translation>
    </message>
    <message>
        <source>延时：</source>
        <translation>Delay</translation>
    </message>
    <message>
        <source>确认</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>还原</source>
        <translation>Restore</translation>
    </message>
</context>
<context>
    <name>ManualMoveRow</name>
    <message>
        <source>手动移动的轴</source>
        <translation>Axis to move by hand</translation>
    </message>
    <message>
        <source>目标位置，按回车键移动</source>
        <translation>Target position; Enter moves there</translation>
    </message>
    <message>
        <source>目标</source>
        <translation>Target</translation>
    </message>
    <message>
        <source>手动移动的速度</source>
        <translation>Speed of moves by hand</translation>
    </message>
    <message>
        <source>按住向负向移动，松开即停止（按钮或方向键）</source>
        <translation>Hold to move in negative direction, release to stop (button or arrow keys)</translation>
    </message>
    <message>
        <source>按住向正向移动，松开即停止（按钮或方向键）</source>
        <translation>Hold to move in positive direction, release to stop (button or arrow keys)</translation>
    </message>
</context>
<context>
    <name>MessageBox</name>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>确认</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>提示</source>
        <translation>Message</translation>
    </message>
</context>
<context>
    <name>MotionLimits</name>
    <message>
        <source>位置超出范围！[%1，%2]</source>
        <translation>Position out of range! [%1, %2]</translation>
    </message>
    <message>
        <source>速度超出范围！(0，%1]</source>
        <translation>Speed out of range! (0, %1]</translation>
    </message>
    <message>
        <source>加速度超出范围！(0，%1]</source>
        <translation>Acceleration out of range! (0, %1]</translation>
    </message>
    <message>
        <source>相对位移超出范围！(0，%1]</source>
        <translation>relative displacement out of range! (0, %1]</translation>
    </message>
    <message>
        <source>步长超出范围！(0，%1]</source>
        <translation>Step size out of range! (0, %1]</translation>
    </message>
    <message>
        <source>步进次数不能为0！</source>
        <translation>The number of steps cannot be 0!</translation>
    </message>
    <message>
        <source>步进延时不能为0！</source>
        <translation>Step delay cannot be 0!</translation>
    </message>
    <message>
        <source>循环次数不能为0！</source>
        <translation>The number of cycles cannot be 0!</translation>
    </message>
</context>
<context>
    <name>MoveParamWidget</name>
    <message>
        <source>位置：</source>
        <translation>Position</translation>
    </message>
    <message>
        <source>速度：</source>
        <translation>Speed</translation>
    </message>
    <message>
        <source>加速度：</source>
        <translation>Acc</translation>
    </message>
    <message>
        <source>确认</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>还原</source>
        <translation>Restore</translation>
    </message>
</context>
<context>
    <name>MoverControlWidget</name>
    <message>
        <source>设置设备参数</source>
        <translation>Set device parameters</translation>
    </message>
    <message>
        <source>放大</source>
        <translation>Enlarge</translation>
    </message>
    <message>
        <source>关闭控制轴窗口</source>
        <translation>Close the axis panel</translation>
    </message>
    <message>
        <source>运行中</source>
        <translation>Doing</translation>
    </message>
    <message>
        <source>原点</source>
        <translation>Origin</translation>
    </message>
    <message>
        <source>移动到目标位置</source>
        <translation>Move to the target position</translation>
    </message>
    <message>
        <source>设置移动参数</source>
        <translation>Set move parameters</translation>
    </message>
    <message>
        <source>负方向步进</source>
        <translation>Jog in the negative direction</translation>
    </message>
    <message>
        <source>正方向步进</source>
        <translation>Jog in the positive direction</translation>
    </message>
    <message>
        <source>设置步进参数</source>
        <translation>Set jog parameters</translation>
    </message>
    <message>
        <source>负方向推进</source>
        <translation>Drive in the negative direction</translation>
    </message>
    <message>
        <source>正方向推进</source>
        <translation>Drive in the positive direction</translation>
    </message>
    <message>
        <source>设置推进参数</source>
        <translation>Set drive parameters</translation>
    </message>
    <message>
        <source>回零</source>
        <translation>Home</translation>
    </message>
    <message>
        <source>停止</source>
        <translation>Stop</translation>
    </message>
    <message>
        <source>使能</source>
        <translation>Enable</translation>
    </message>
    <message>
        <source>循环运行</source>
        <translation>Loop run</translation>
    </message>
    <message>
        <source>已到达负限位！</source>
        <translation>Negative limit reached!</translation>
    </message>
    <message>
        <source>已到达正限位！</source>
        <translation>Positive limit reached!</translation>
    </message>
    <message>
        <source>负限位光耦失效 </source>
        <translation>negative limit photocoupler failed</translation>
    </message>
    <message>
        <source>正限位光耦失效 </source>
        <translation>positive limit photocoupler failed</translation>
    </message>
    <message>
        <source>原点限位光耦失效 </source>
        <translation>Origin limit photocoupler failed</translation>
    </message>
    <message>
        <source>位移台序列号：</source>
        <translation>Motor stage serial NO.:</translation>
    </message>
    <message>
        <source>缩小</source>
        <translation>Reduce</translation>
    </message>
    <message>
        <source>操作日志</source>
        <translation>Operation log</translation>
    </message>
    <message>
        <source>%1：亮</source>
        <translation>%1: on</translation>
    </message>
    <message>
        <source>%1：灭</source>
        <translation>%1: off</translation>
    </message>
</context>
<context>
    <name>MoverWidget</name>
    <message>
        <source>帮助</source>
        <translation>Help</translation>
    </message>
    <message>
        <source>软件设置</source>
        <translation>Softerware settings</translation>
    </message>
    <message>
        <source>最小化</source>
        <translation>Minimise</translation>
    </message>
    <message>
        <source>全屏</source>
        <translation>Full screen</translation>
    </message>
    <message>
        <source>退出</source>
        <translation>Quit</translation>
    </message>
    <message>
        <source>连接设备</source>
        <translation>Connect the device serial port COM</translation>
    </message>
    <message>
        <source>添加运动轴控制窗口</source>
        <translation>Add an axis control widget</translation>
    </message>
    <message>
        <source>使用摇杆</source>
        <translation>Use rocker</translation>
    </message>
    <message>
        <source>初始化轴，识别芯片错误(%1)！</source>
        <translation>Initialization axis, 
chip recognition error (%1)!</translation>
    </message>
    <message>
        <source>初始化轴，读取参数错误(%1)！</source>
        <translation>Initialize the axis,
 read parameter error (%1)!</translation>
    </message>
    <message>
        <source>轴数量超出上限,请检查操作窗口后继续操作！</source>
        <translation>The number of Axis exceeds the 
limit,please check the operation 
window before continuing!</translation>
    </message>
    <message>
        <source>初始化运动轴参数成功</source>
        <translation>Initialized motion axis parameters successfully</translation>
    </message>
    <message>
        <source>您确定要关闭控制轴窗口吗?</source>
        <translation>Sure you want to close the control
 axis window?</translation>
    </message>
    <message>
        <source>设备未连接，请连接设备后继续操作!</source>
        <translation>The device is not connected,please 
connect the device and continue to 
operate!</translation>
    </message>
    <message>
        <source>获取设备参数失败，请检查
设备是否正确连接!</source>
        <translation>Failed to get device parameters, 
please check whether the device 
is correctly connected!</translation>
    </message>
    <message>
        <source>轴数量已达上限!</source>
        <translation>Maximum number of axes reached!</translation>
    </message>
    <message>
        <source>请先连接设备</source>
        <translation>Connect a device to begin</translation>
    </message>
    <message>
        <source>请点击“+”添加运动轴控制窗口</source>
        <translation>Click “+” to add an axis control widget</translation>
    </message>
    <message>
        <source>模拟控制器</source>
        <translation>Simulated controller</translation>
    </message>
    <message>
        <source>全部停止</source>
        <translation>Stop all</translation>
    </message>
    <message>
        <source>立即停止所有轴（F12）</source>
        <translation>Stop all axes at once (F12)</translation>
    </message>
    <message>
        <source>正在停止…</source>
        <translation>Stopping…</translation>
    </message>
    <message>
        <source>工作台</source>
        <translation>Workbench</translation>
    </message>
    <message>
        <source>工作台（Ctrl+B）</source>
        <translation>Workbench (Ctrl+B)</translation>
    </message>
    <message>
        <source>运动命令已被接受，但轴没有动</source>
        <translation>The axis was told to move, but does not</translation>
    </message>
    <message>
        <source>运动预计 %1 s 完成，至今仍未结束</source>
        <translation>This motion should take %1 s and has not ended</translation>
    </message>
    <message>
        <source>此前 60 秒的记录已存入 %1</source>
        <translation>The 60 s before are kept in %1</translation>
    </message>
    <message>
        <source>此前 60 秒的记录无法保存：%1</source>
        <translation>The 60 s before could not be kept: %1</translation>
    </message>
    <message>
        <source>序列的消息</source>
        <translation>Message of the sequence</translation>
    </message>
    <message>
        <source>序列“%1”等待操作者：%2</source>
        <translation>Sequence &quot;%1&quot; waits for the operator: %2</translation>
    </message>
</context>
<context>
    <name>OperationLog</name>
    <message>
        <source>设置设备参数</source>
        <translation>Setting device parameters</translation>
    </message>
    <message>
        <source>移动</source>
        <translation>Move</translation>
    </message>
    <message>
        <source>设置移动参数</source>
        <translation>Setting move param</translation>
    </message>
    <message>
        <source>推进</source>
        <translation>Drive</translation>
    </message>
    <message>
        <source>设置自动运行参数</source>
        <translation>Setting drive param</translation>
    </message>
    <message>
        <source>步进</source>
        <translation>Jog</translation>
    </message>
    <message>
        <source>设置步进参数</source>
        <translation>Setting jog param</translation>
    </message>
    <message>
        <source>还原</source>
        <translation>Restore</translation>
    </message>
    <message>
        <source>停止</source>
        <translation>Stop</translation>
    </message>
    <message>
        <source>使能设备</source>
        <translation>Enable control</translation>
    </message>
    <message>
        <source>当前运行次数</source>
        <translation>current run count</translation>
    </message>
    <message>
        <source>运行中</source>
        <translation>Doing</translation>
    </message>
    <message>
        <source>操作被取消</source>
        <translation>Operation canceled</translation>
    </message>
    <message>
        <source>操作失败</source>
        <translation>operation failure</translation>
    </message>
    <message>
        <source>操作成功</source>
        <translation>operate successfully</translation>
    </message>
    <message>
        <source>运行完成</source>
        <translation>Operation completed</translation>
    </message>
</context>
<context>
    <name>OptionsWidget</name>
    <message>
        <source>设置</source>
        <translation>Settings</translation>
    </message>
    <message>
        <source>语言</source>
        <translation>Language</translation>
    </message>
    <message>
        <source>触发</source>
        <translation>Trigger</translation>
    </message>
    <message>
        <source>电机参数</source>
        <translation>Motor Param</translation>
    </message>
    <message>
        <source>位置补偿</source>
        <translation>Pos Conpen</translation>
    </message>
    <message>
        <source>中文</source>
        <translation>Chinese</translation>
    </message>
    <message>
        <source>英文</source>
        <translation>English</translation>
    </message>
    <message>
        <source>1号轴</source>
        <translation>Asix 1</translation>
    </message>
    <message>
        <source>触发输入</source>
        <translation>Trigger IN</translation>
    </message>
    <message>
        <source>触发输出</source>
        <translation>Trigger OUT</translation>
    </message>
    <message>
        <source>位移量：</source>
        <translation>displacement:</translation>
    </message>
    <message>
        <source>2号轴</source>
        <translation>Axis 2</translation>
    </message>
    <message>
        <source>3号轴</source>
        <translation>Axis 3</translation>
    </message>
    <message>
        <source>轴号：</source>
        <translation>Axis NO.:</translation>
    </message>
    <message>
        <source>型号名称：</source>
        <translation>Model name</translation>
    </message>
    <message>
        <source>序列号：</source>
        <translation>Serial NO.</translation>
    </message>
    <message>
        <source>一圈的脉冲数：</source>
        <translation>Pulses/cycle</translation>
    </message>
    <message>
        <source>导程：</source>
        <translation>Lead</translation>
    </message>
    <message>
        <source>回原点的速度：</source>
        <translation>Reset speed</translation>
    </message>
    <message>
        <source>位移台类型：</source>
        <translation>Stage type</translation>
    </message>
    <message>
        <source>单位类型：</source>
        <translation>Unit type</translation>
    </message>
    <message>
        <source>正限位极性：</source>
        <translation>P-LSP</translation>
    </message>
    <message>
        <source>负限位极性：</source>
        <translation>N-LSP</translation>
    </message>
    <message>
        <source>零点位极性：</source>
        <translation>Z-PSP</translation>
    </message>
    <message>
        <source>运动方向：</source>
        <translation>Moving direction</translation>
    </message>
    <message>
        <source>限位方向：</source>
        <translation>Limiting direction</translation>
    </message>
    <message>
        <source>读出参数</source>
        <translation>ReadParam</translation>
    </message>
    <message>
        <source>写入参数</source>
        <translation>WriteParam</translation>
    </message>
    <message>
        <source>启用</source>
        <translation>open</translation>
    </message>
    <message>
        <source>关闭</source>
        <translation>close</translation>
    </message>
    <message>
        <source>提示</source>
        <translation>Message</translation>
    </message>
    <message>
        <source>修改电机参数可能会导致电机故障，请谨慎修改！</source>
        <translation>Modifying the motor parameters may cause motor failure, please proceed with caution!</translation>
    </message>
    <message>
        <source>读取电机参数失败：error（%1）</source>
        <translation>Failed to read motor parameters: error (%1)</translation>
    </message>
    <message>
        <source>是否确认修改电机参数？</source>
        <translation>Are you sure you want to modify the motor parameters?</translation>
    </message>
    <message>
        <source>写入电机参数失败：error（%1）</source>
        <translation>Failed to write motor parameters: error (%1)</translation>
    </message>
    <message>
        <source>写入电机参数成功</source>
        <translation>Write motor parameters successfully</translation>
    </message>
    <message>
        <source>关闭</source>
        <comment>the dialog</comment>
        <translation>Close</translation>
    </message>
</context>
<context>
    <name>ParameterTexts</name>
    <message>
        <source>型号</source>
        <translation>Model name</translation>
    </message>
    <message>
        <source>序列号</source>
        <translation>Serial number</translation>
    </message>
    <message>
        <source>每转脉冲数</source>
        <translation>Pulses per turn</translation>
    </message>
    <message>
        <source>导程</source>
        <translation>Lead</translation>
    </message>
    <message>
        <source>复位速度</source>
        <translation>Homing speed</translation>
    </message>
    <message>
        <source>位移台类型</source>
        <translation>Stage type</translation>
    </message>
    <message>
        <source>单位类型</source>
        <translation>Unit type</translation>
    </message>
    <message>
        <source>正限位极性</source>
        <translation>Positive limit</translation>
    </message>
    <message>
        <source>负限位极性</source>
        <translation>Negative limit</translation>
    </message>
    <message>
        <source>零位极性</source>
        <translation>Zero position</translation>
    </message>
    <message>
        <source>运动方向</source>
        <translation>Moving direction</translation>
    </message>
    <message>
        <source>限位方向</source>
        <translation>Limiting direction</translation>
    </message>
    <message>
        <source>光耦顺序</source>
        <translation>Opto-coupler order</translation>
    </message>
    <message>
        <source>光耦数量</source>
        <translation>Opto-couplers</translation>
    </message>
    <message>
        <source>零位光耦宽度</source>
        <translation>Zero opto-coupler width</translation>
    </message>
    <message>
        <source>最大速度</source>
        <translation>Highest speed</translation>
    </message>
    <message>
        <source>最大加速度</source>
        <translation>Highest acceleration</translation>
    </message>
    <message>
        <source>最小位置</source>
        <translation>Lower end of travel</translation>
    </message>
    <message>
        <source>最大位置</source>
        <translation>Upper end of travel</translation>
    </message>
    <message>
        <source>回程间隙</source>
        <translation>Backlash</translation>
    </message>
    <message>
        <source>电机相数</source>
        <translation>Motor phases</translation>
    </message>
    <message>
        <source>摇杆最大速度</source>
        <translation>Highest joystick speed</translation>
    </message>
    <message>
        <source>修改日期</source>
        <translation>Date of change</translation>
    </message>
    <message>
        <source>位置补偿</source>
        <translation>Position compensation</translation>
    </message>
    <message>
        <source>正向补偿表</source>
        <translation>Positive compensation table</translation>
    </message>
    <message>
        <source>负向补偿表</source>
        <translation>Negative compensation table</translation>
    </message>
    <message>
        <source>连接时</source>
        <translation>connected</translation>
    </message>
    <message>
        <source>写入后</source>
        <translation>after writing</translation>
    </message>
    <message>
        <source>手动</source>
        <translation>by hand</translation>
    </message>
    <message>
        <source>恢复前</source>
        <translation>before restoring</translation>
    </message>
    <message>
        <source>未知</source>
        <translation>unknown</translation>
    </message>
    <message>
        <source>开</source>
        <translation>on</translation>
    </message>
    <message>
        <source>关</source>
        <translation>off</translation>
    </message>
    <message>
        <source>空</source>
        <translation>empty</translation>
    </message>
    <message>
        <source>脉冲</source>
        <translation>pulses</translation>
    </message>
</context>
<context>
    <name>PositionModel</name>
    <message>
        <source>取当前值</source>
        <translation>Take current</translation>
    </message>
    <message>
        <source>前往</source>
        <translation>Go</translation>
    </message>
    <message>
        <source>名称</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>位置的名称不能为空。</source>
        <translation>A position needs a name.</translation>
    </message>
    <message>
        <source>已有名为“%1”的位置。</source>
        <translation>There is a position called &quot;%1&quot; already.</translation>
    </message>
</context>
<context>
    <name>RecorderPlot</name>
    <message>
        <source>位置</source>
        <translation>Position</translation>
    </message>
    <message>
        <source>速度</source>
        <translation>Velocity</translation>
    </message>
    <message>
        <source>事件</source>
        <translation>Events</translation>
    </message>
    <message>
        <source>尚无记录</source>
        <translation>Nothing recorded yet</translation>
    </message>
    <message>
        <source>连接设备后自动开始记录。</source>
        <translation>Connect a device; recording begins by itself.</translation>
    </message>
    <message>
        <source>无法显示曲线：%1</source>
        <translation>The plots cannot be shown: %1</translation>
    </message>
</context>
<context>
    <name>RecorderView</name>
    <message>
        <source>记录</source>
        <translation>Recorder</translation>
    </message>
    <message>
        <source>暂停</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>停住画面，记录继续</source>
        <translation>Holds the picture; recording goes on</translation>
    </message>
    <message>
        <source>实时</source>
        <translation>Live</translation>
    </message>
    <message>
        <source>范围</source>
        <translation>Range</translation>
    </message>
    <message>
        <source>10 秒</source>
        <translation>10 s</translation>
    </message>
    <message>
        <source>1 分钟</source>
        <translation>1 min</translation>
    </message>
    <message>
        <source>10 分钟</source>
        <translation>10 min</translation>
    </message>
    <message>
        <source>1 小时</source>
        <translation>1 h</translation>
    </message>
    <message>
        <source>全部</source>
        <translation>All</translation>
    </message>
    <message>
        <source>采样率</source>
        <translation>Rate</translation>
    </message>
    <message>
        <source>导出 CSV</source>
        <translation>Export CSV</translation>
    </message>
    <message>
        <source>导出图片</source>
        <translation>Export picture</translation>
    </message>
    <message>
        <source>轴</source>
        <translation>Axis</translation>
    </message>
    <message>
        <source>当前</source>
        <translation>Now</translation>
    </message>
    <message>
        <source>光标</source>
        <translation>Cursor</translation>
    </message>
    <message>
        <source>暂无轴</source>
        <translation>No axis yet</translation>
    </message>
    <message>
        <source>事件</source>
        <translation>Events</translation>
    </message>
    <message>
        <source>暂无事件</source>
        <translation>No events yet</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>当前显示的时段 …</source>
        <translation>What is shown …</translation>
    </message>
    <message>
        <source>全部记录 …</source>
        <translation>Everything recorded …</translation>
    </message>
    <message>
        <source>已记录：无</source>
        <translation>Recorded: nothing</translation>
    </message>
    <message>
        <source>%1 小时 %2 分</source>
        <translation>%1 h %2 min</translation>
    </message>
    <message>
        <source>%1 分 %2 秒</source>
        <translation>%1 min %2 s</translation>
    </message>
    <message>
        <source>%1 秒</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>已记录 %1，%2 个采样点</source>
        <translation>Recorded: %1, %2 samples</translation>
    </message>
    <message>
        <source>未连接</source>
        <translation>Not connected</translation>
    </message>
    <message>
        <source>实际每秒 %1 个采样点</source>
        <translation>%1 samples per second reached</translation>
    </message>
    <message>
        <source>CSV，逗号和小数点</source>
        <translation>CSV, comma and decimal point</translation>
    </message>
    <message>
        <source>CSV，分号和小数逗号</source>
        <translation>CSV, semicolon and decimal comma</translation>
    </message>
    <message>
        <source>已保存：%1</source>
        <translation>Saved: %1</translation>
    </message>
    <message>
        <source>导出已取消</source>
        <translation>Export cancelled</translation>
    </message>
    <message>
        <source>无法保存文件：%1</source>
        <translation>The file cannot be saved: %1</translation>
    </message>
    <message>
        <source>PNG 图片</source>
        <translation>PNG picture</translation>
    </message>
    <message>
        <source>SVG 图片</source>
        <translation>SVG picture</translation>
    </message>
</context>
<context>
    <name>ScanDialog</name>
    <message>
        <source>扫描</source>
        <translation>Scan</translation>
    </message>
    <message>
        <source>扫描轴</source>
        <translation>Fast axis</translation>
    </message>
    <message>
        <source>从</source>
        <translation>From</translation>
    </message>
    <message>
        <source>到</source>
        <translation>To</translation>
    </message>
    <message>
        <source>步距</source>
        <translation>Step</translation>
    </message>
    <message>
        <source>逐行扫描第二个轴</source>
        <translation>Line by line along a second axis</translation>
    </message>
    <message>
        <source>换行轴</source>
        <translation>Slow axis</translation>
    </message>
    <message>
        <source>来回扫描，不回到行首</source>
        <translation>There and back, without a return</translation>
    </message>
    <message>
        <source>每点等待</source>
        <translation>Wait at each point</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>确认</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>共 %1 步</source>
        <translation>Steps: %1</translation>
    </message>
    <message>
        <source>两个轴必须不同</source>
        <translation>The two axes must differ</translation>
    </message>
    <message>
        <source>步数太多，最多 %1 步</source>
        <translation>Too many steps, at most %1</translation>
    </message>
</context>
<context>
    <name>SequenceStepDialog</name>
    <message>
        <source>步骤</source>
        <translation>Step</translation>
    </message>
    <message>
        <source>动作</source>
        <translation>What</translation>
    </message>
    <message>
        <source>位置</source>
        <translation>Position</translation>
    </message>
    <message>
        <source>轴</source>
        <translation>Axis</translation>
    </message>
    <message>
        <source>目标</source>
        <translation>Target</translation>
    </message>
    <message>
        <source>速度</source>
        <translation>Speed</translation>
    </message>
    <message>
        <source>按设定</source>
        <translation>as set</translation>
    </message>
    <message>
        <source>之后等待</source>
        <translation>Wait afterwards</translation>
    </message>
    <message>
        <source>给操作者的话</source>
        <translation>Text for the operator</translation>
    </message>
    <message>
        <source>从第几步起</source>
        <translation>From step</translation>
    </message>
    <message>
        <source>遍数</source>
        <translation>Passes</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>确认</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>移到位置</source>
        <translation>Move to a position</translation>
    </message>
    <message>
        <source>所有轴</source>
        <translation>All axes</translation>
    </message>
    <message>
        <source>时间</source>
        <translation>Time</translation>
    </message>
    <message>
        <source>距离</source>
        <translation>Distance</translation>
    </message>
</context>
<context>
    <name>SequenceTexts</name>
    <message>
        <source>移到</source>
        <translation>Move to</translation>
    </message>
    <message>
        <source>移动</source>
        <translation>Move by</translation>
    </message>
    <message>
        <source>回零</source>
        <translation>Home</translation>
    </message>
    <message>
        <source>等待</source>
        <translation>Wait</translation>
    </message>
    <message>
        <source>询问</source>
        <translation>Ask</translation>
    </message>
    <message>
        <source>重复</source>
        <translation>Repeat</translation>
    </message>
    <message>
        <source>设定速度</source>
        <translation>Set speed</translation>
    </message>
    <message>
        <source>没有这个名称的位置</source>
        <translation>There is no position of that name</translation>
    </message>
    <message>
        <source>该位置没有任何轴</source>
        <translation>The position has no axis</translation>
    </message>
    <message>
        <source>%1 不存在或没有应答</source>
        <translation>%1 is not there, or does not answer</translation>
    </message>
    <message>
        <source>%1 未使能</source>
        <translation>%1 is not enabled</translation>
    </message>
    <message>
        <source>%1 正在运动</source>
        <translation>%1 is moving</translation>
    </message>
    <message>
        <source>%1 将移到 %2，超出行程</source>
        <translation>%1 would go to %2, beyond its travel</translation>
    </message>
    <message>
        <source>%1 的速度必须大于 0，且不超过位移台的最高速度</source>
        <translation>The speed of %1 must be above 0 and not above that of its stage</translation>
    </message>
    <message>
        <source>等待时间必须在 0 到 24 小时之间</source>
        <translation>A wait must be from 0 to 24 hours</translation>
    </message>
    <message>
        <source>%1 的目标不是数字</source>
        <translation>The target of %1 is not a number</translation>
    </message>
    <message>
        <source>重复的起始行必须在这一行之前</source>
        <translation>The step to repeat from must be above this one</translation>
    </message>
    <message>
        <source>重复的行与另一处重复交叉</source>
        <translation>The repeated steps cross those of another repeat</translation>
    </message>
    <message>
        <source>重复次数必须在 1 到 1000000 之间</source>
        <translation>The passes must be from 1 to 1000000</translation>
    </message>
    <message>
        <source>重复最多嵌套 8 层</source>
        <translation>At most 8 repeats can stand within each other</translation>
    </message>
    <message>
        <source>已完成</source>
        <translation>Finished</translation>
    </message>
    <message>
        <source>已停止</source>
        <translation>Stopped</translation>
    </message>
    <message>
        <source>%1 被面板停止</source>
        <translation>%1 was stopped on its panel</translation>
    </message>
    <message>
        <source>已全部停止</source>
        <translation>Everything was stopped</translation>
    </message>
    <message>
        <source>%1 被控制台启动</source>
        <translation>%1 was started by the console</translation>
    </message>
    <message>
        <source>%1 的参数被改写</source>
        <translation>The parameters of %1 were changed</translation>
    </message>
    <message>
        <source>%1 拒绝执行：%3</source>
        <translation>%1 refused: %3</translation>
    </message>
    <message>
        <source>%1 停在 %2，未到达目标</source>
        <translation>%1 stands at %2, not at its target</translation>
    </message>
    <message>
        <source>%1 停在 %2，未完成回零</source>
        <translation>%1 stands at %2 and is not homed</translation>
    </message>
    <message>
        <source>%1 没有动</source>
        <translation>%1 did not move</translation>
    </message>
    <message>
        <source>%1 没有应答</source>
        <translation>%1 no longer answers</translation>
    </message>
    <message>
        <source>控制器已断开</source>
        <translation>The controller was disconnected</translation>
    </message>
    <message>
        <source>%1 的面板已关闭</source>
        <translation>The panel of %1 was closed</translation>
    </message>
    <message>
        <source>摇杆接管了各轴</source>
        <translation>The joystick took the axes</translation>
    </message>
    <message>
        <source>程序已退出</source>
        <translation>The program was closed</translation>
    </message>
    <message>
        <source>文件无法读取，或者太大</source>
        <translation>The file cannot be read, or is too large</translation>
    </message>
    <message>
        <source>文件不是所需的类型</source>
        <translation>This is a file of another kind</translation>
    </message>
    <message>
        <source>文件由较新版本的程序写成</source>
        <translation>The file is from a later version of the program</translation>
    </message>
    <message>
        <source>列数不对</source>
        <translation>wrong number of columns</translation>
    </message>
    <message>
        <source>未知的步骤</source>
        <translation>a step that is not known</translation>
    </message>
    <message>
        <source>数字不对</source>
        <translation>no number, or one that cannot be</translation>
    </message>
    <message>
        <source>没有这个轴</source>
        <translation>there is no such axis</translation>
    </message>
    <message>
        <source>位置的名称为空或重复</source>
        <translation>a position without a name, or one that is there twice</translation>
    </message>
    <message>
        <source>行数太多</source>
        <translation>too many lines</translation>
    </message>
    <message>
        <source>所有轴</source>
        <translation>all axes</translation>
    </message>
    <message>
        <source>%1 小时 %2 分</source>
        <translation>%1 h %2 min</translation>
    </message>
    <message>
        <source>%1 分 %2 秒</source>
        <translation>%1 min %2 s</translation>
    </message>
    <message>
        <source>%1 秒</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>从第 %1 步起，共 %2 遍</source>
        <translation>from %1, %2 times</translation>
    </message>
    <message>
        <source>按设定</source>
        <translation>as set</translation>
    </message>
    <message>
        <source>序列“%1”已完成</source>
        <translation>Sequence &quot;%1&quot; finished</translation>
    </message>
    <message>
        <source>序列“%1”在第 %2 步结束：%3</source>
        <translation>Sequence &quot;%1&quot; ended at step %2: %3</translation>
    </message>
    <message>
        <source>第 %1 行：%2</source>
        <translation>Line %1: %2</translation>
    </message>
    <message>
        <source>%1 在 %2 处到达负限位</source>
        <translation>%1 reached its negative limit at %2</translation>
    </message>
    <message>
        <source>%1 在 %2 处到达正限位</source>
        <translation>%1 reached its positive limit at %2</translation>
    </message>
    <message>
        <source>“%1”不是数字。</source>
        <translation>&quot;%1&quot; is not a number.</translation>
    </message>
</context>
<context>
    <name>SequenceWidget</name>
    <message>
        <source>位置与序列</source>
        <translation>Positions and sequence</translation>
    </message>
    <message>
        <source>位置</source>
        <translation>Positions</translation>
    </message>
    <message>
        <source>添加位置：各轴的当前位置</source>
        <translation>Add a position: where the axes stand now</translation>
    </message>
    <message>
        <source>删除所选的位置</source>
        <translation>Delete the selected positions</translation>
    </message>
    <message>
        <source>导入</source>
        <translation>Import</translation>
    </message>
    <message>
        <source>导出</source>
        <translation>Export</translation>
    </message>
    <message>
        <source>还没有位置。点“+”把各轴的当前位置存为一个位置。</source>
        <translation>No positions yet. + keeps where the axes stand now.</translation>
    </message>
    <message>
        <source>步骤</source>
        <translation>Steps</translation>
    </message>
    <message>
        <source>序列的名称</source>
        <translation>Name of the sequence</translation>
    </message>
    <message>
        <source>名称</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>检查并试算，轴不会动</source>
        <translation>Check and dry run: nothing moves</translation>
    </message>
    <message>
        <source>添加步骤</source>
        <translation>Add steps</translation>
    </message>
    <message>
        <source>上移（Alt+↑）</source>
        <translation>Up (Alt+↑)</translation>
    </message>
    <message>
        <source>下移（Alt+↓）</source>
        <translation>Down (Alt+↓)</translation>
    </message>
    <message>
        <source>删除所选的步骤</source>
        <translation>Delete the selected steps</translation>
    </message>
    <message>
        <source>还没有步骤。点“+”添加一步，或者用扫描生成。</source>
        <translation>No steps yet. + adds a step, or those of a scan.</translation>
    </message>
    <message>
        <source>运行</source>
        <translation>Run</translation>
    </message>
    <message>
        <source>暂停</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>这一步结束后暂停</source>
        <translation>Pauses after this step</translation>
    </message>
    <message>
        <source>单步</source>
        <translation>Step</translation>
    </message>
    <message>
        <source>只运行一步</source>
        <translation>Runs one step</translation>
    </message>
    <message>
        <source>停止</source>
        <translation>Stop</translation>
    </message>
    <message>
        <source>回到开头</source>
        <translation>Back to start</translation>
    </message>
    <message>
        <source>保存的文件已损坏或由较新版本写成，已另存保留：%1</source>
        <translation>The saved file was damaged or of a later version; it is kept as %1</translation>
    </message>
    <message>
        <source>位置和序列未能写入磁盘，稍后会再试。</source>
        <translation>The positions and the sequence could not be saved. It will be tried again.</translation>
    </message>
    <message>
        <source>%1 没有应答，当前位置未知。</source>
        <translation>%1 does not answer: its position is not known.</translation>
    </message>
    <message>
        <source>位置 %1</source>
        <translation>Position %1</translation>
    </message>
    <message>
        <source>仍然前往吗？</source>
        <translation>Go anyway?</translation>
    </message>
    <message>
        <source>位置不可靠，仍然前往</source>
        <translation>Position in doubt, gone anyway</translation>
    </message>
    <message>
        <source>已导入 %1 个位置，同名的已替换。</source>
        <translation>%1 positions imported; those of the same name were replaced.</translation>
    </message>
    <message>
        <source>一个序列最多 %1 步。</source>
        <translation>A sequence has at most %1 steps.</translation>
    </message>
    <message>
        <source>没有可用的轴。</source>
        <translation>There is no axis.</translation>
    </message>
    <message>
        <source>已导入 %1 步，新增 %2 个位置。Ctrl+Z 可撤销。</source>
        <translation>%1 steps imported, %2 positions added. Ctrl+Z takes it back.</translation>
    </message>
    <message>
        <source>没有导入任何内容。
%1</source>
        <translation>Nothing was imported.
%1</translation>
    </message>
    <message>
        <source>已保存：%1</source>
        <translation>Saved: %1</translation>
    </message>
    <message>
        <source>无法保存文件：%1</source>
        <translation>The file cannot be saved: %1</translation>
    </message>
    <message>
        <source>已有序列在运行。</source>
        <translation>A sequence is running.</translation>
    </message>
    <message>
        <source>控制器未连接。</source>
        <translation>No controller is connected.</translation>
    </message>
    <message>
        <source>摇杆正在控制各轴。</source>
        <translation>The joystick drives the axes.</translation>
    </message>
    <message>
        <source>第 %1 步：%2</source>
        <translation>Step %1: %2</translation>
    </message>
    <message>
        <source>不能运行。%1</source>
        <translation>Cannot be run. %1</translation>
    </message>
    <message>
        <source>有 %1 步不能运行。%2</source>
        <translation>%1 steps cannot be run. %2</translation>
    </message>
    <message>
        <source>可以运行：共 %1 步，约需 %2（不含等待操作者的时间）。</source>
        <translation>It can be run: %1 steps in about %2, without the operator.</translation>
    </message>
    <message>
        <source>%1：%2 … %3</source>
        <translation>%1: %2 … %3</translation>
    </message>
    <message>
        <source>以下轴未回零，或者位置不可靠：%1
</source>
        <translation>Not homed, or with a position in doubt: %1
</translation>
    </message>
    <message>
        <source>轴的状态已改变，请重试。</source>
        <translation>An axis has changed meanwhile. Please try again.</translation>
    </message>
    <message>
        <source>仍然运行吗？</source>
        <translation>Run anyway?</translation>
    </message>
    <message>
        <source>位置不可靠，仍然运行序列</source>
        <translation>Position in doubt, sequence run anyway</translation>
    </message>
    <message>
        <source>不能从这里继续，请回到开头。</source>
        <translation>It cannot go on from here. Go back to the start.</translation>
    </message>
    <message>
        <source>未命名</source>
        <translation>Unnamed</translation>
    </message>
    <message>
        <source>前往位置“%1”</source>
        <translation>Going to position &quot;%1&quot;</translation>
    </message>
    <message>
        <source>序列“%1”从第 %2 步继续</source>
        <translation>Sequence &quot;%1&quot; goes on from step %2</translation>
    </message>
    <message>
        <source>序列“%1”开始</source>
        <translation>Sequence &quot;%1&quot; started</translation>
    </message>
    <message>
        <source>已到达位置“%1”</source>
        <translation>Position &quot;%1&quot; reached</translation>
    </message>
    <message>
        <source>未到达位置“%1”：%2</source>
        <translation>Position &quot;%1&quot; not reached: %2</translation>
    </message>
    <message>
        <source>%1。轴可能仍在运动。</source>
        <translation>%1. The axes may still move.</translation>
    </message>
    <message>
        <source>%1。序列的轴均已停止。</source>
        <translation>%1. All its axes are stopped.</translation>
    </message>
    <message>
        <source>第 %1 步，共 %2 步</source>
        <translation>Step %1 of %2</translation>
    </message>
    <message>
        <source>%1，第 %2 遍，共 %3 遍</source>
        <translation>%1, pass %2 of %3</translation>
    </message>
    <message>
        <source>正在前往“%1”</source>
        <translation>Going to &quot;%1&quot;</translation>
    </message>
    <message>
        <source>已暂停，下一步是%1</source>
        <translation>Paused. Next: %1</translation>
    </message>
    <message>
        <source>%1，之后暂停</source>
        <translation>%1, then pause</translation>
    </message>
    <message>
        <source>%1：%2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>已完成 %1 步</source>
        <translation>All %1 steps done</translation>
    </message>
    <message>
        <source>停止：%1。</source>
        <translation>Stopped: %1.</translation>
    </message>
    <message>
        <source>另一个程序正在使用这些位置和序列，这里只能查看。</source>
        <translation>Another program uses these positions and sequences. They can only be viewed here.</translation>
    </message>
    <message>
        <source>连接控制器后可以运行。</source>
        <translation>Connect a controller to run it.</translation>
    </message>
    <message>
        <source>共 %1 步</source>
        <translation>Steps: %1</translation>
    </message>
    <message>
        <source>继续</source>
        <translation>Continue</translation>
    </message>
    <message>
        <source>步骤 …</source>
        <translation>Step …</translation>
    </message>
    <message>
        <source>扫描 …</source>
        <translation>Scan …</translation>
    </message>
    <message>
        <source>运行报告 …</source>
        <translation>Report of the run …</translation>
    </message>
    <message>
        <source>剩余 %1</source>
        <translation>%1 left</translation>
    </message>
    <message>
        <source>用时 %1</source>
        <translation>after %1</translation>
    </message>
    <message>
        <source>%1运行会从这里继续。</source>
        <translation>%1 Run goes on from there.</translation>
    </message>
    <message>
        <source>%1。</source>
        <translation>%1.</translation>
    </message>
    <message>
        <source>%1 已在行程的终点。</source>
        <translation>%1 is at the end of its travel.</translation>
    </message>
    <message>
        <source>手动移向 %1</source>
        <translation>By hand towards %1</translation>
    </message>
    <message>
        <source>手动移动：%1</source>
        <translation>By hand: %1</translation>
    </message>
</context>
<context>
    <name>SerialComDev</name>
    <message>
        <source>Move</source>
        <translation>Move</translation>
    </message>
    <message>
        <source>正方向Drive</source>
        <translation>Positive Direction Drive</translation>
    </message>
    <message>
        <source>负方向Drive</source>
        <translation>Negative Direction Drive</translation>
    </message>
    <message>
        <source>正方向Jog</source>
        <translation>Positive direction Jog</translation>
    </message>
    <message>
        <source>负方向Jog</source>
        <translation>Negative direction Jog</translation>
    </message>
    <message>
        <source>正方向循环</source>
        <translation>Forward loop</translation>
    </message>
    <message>
        <source>负方向循环</source>
        <translation>Negative direction loop</translation>
    </message>
    <message>
        <source>读取当前位置出错</source>
        <translation>Error reading current location</translation>
    </message>
    <message>
        <source>获取设备状态出错</source>
        <translation>Error in getting device status</translation>
    </message>
    <message>
        <source>设置速度参数出错</source>
        <translation>Error setting speed parameters</translation>
    </message>
    <message>
        <source>设置加速度参数出错</source>
        <translation>Error setting acceleration parameters</translation>
    </message>
    <message>
        <source>设置参数，速度：%1，加速度：%2</source>
        <translation>Set parameters, speed: %1, acceleration: %2</translation>
    </message>
    <message>
        <source>设置相对位移参数出错</source>
        <translation>Setting the relative displacement parameters is incorrect</translation>
    </message>
    <message>
        <source>设置相对位移使能参数出错</source>
        <translation>Setting the relative displacement enable parameter failed</translation>
    </message>
    <message>
        <source>设置参数，相对位移：%1，使能：%2</source>
        <translation>Set parameters, relative displacement: %1, enable: %2</translation>
    </message>
    <message>
        <source>设置目标位置参数出错</source>
        <translation>Error setting target location parameters</translation>
    </message>
    <message>
        <source>设置参数，目标位置：%1</source>
        <translation>Set parameters, target location: %1</translation>
    </message>
    <message>
        <source>设置JOG步长失败</source>
        <translation>Setting JOG step size failed</translation>
    </message>
    <message>
        <source>设置JOG次数失败</source>
        <translation>Failed to set JOG times</translation>
    </message>
    <message>
        <source>设置JOG延时时间失败</source>
        <translation>设置JOG延时时间失败</translation>
    </message>
    <message>
        <source>JOG步长：%1, JOG次数：%2, JOG延时:%3</source>
        <translation>JOG step size: %1, JOG times: %2, JOG delay: %3</translation>
    </message>
    <message>
        <source>设置循环次数失败</source>
        <translation>Failed to set the number of loops</translation>
    </message>
    <message>
        <source>设置循环位移量失败</source>
        <translation>Failed to set the loop shift amount</translation>
    </message>
    <message>
        <source>设置循环停留时间失败</source>
        <translation>Failed to set the loop dwell time</translation>
    </message>
    <message>
        <source>循环次数：%1, 循环位移：%2</source>
        <translation>Number of cycles: %1, Cycle displacement: %2</translation>
    </message>
    <message>
        <source>设置触发输入参数失败，轴:%1</source>
        <translation>Failed to set the trigger input parameters, axis: %1</translation>
    </message>
    <message>
        <source>设置触发输出参数失败，轴:%1</source>
        <translation>Failed to set the trigger output parameters, axis: %1</translation>
    </message>
    <message>
        <source>设置触发输入位移量失败，轴:%1</source>
        <translation>Failed to set the trigger input displacement, axis: %1</translation>
    </message>
    <message>
        <source>停止运行</source>
        <translation>Stop running</translation>
    </message>
    <message>
        <source>电机复位</source>
        <translation>Motor reset</translation>
    </message>
    <message>
        <source>该轴正由序列使用</source>
        <translation>The axis is in use by a sequence</translation>
    </message>
</context>
<context>
    <name>StatusWords</name>
    <message>
        <source>此控制器没有该功能</source>
        <translation>this controller does not have it</translation>
    </message>
    <message>
        <source>此控制板的所有轴都将移动：%1；请再按一次</source>
        <translation>all axes of this board will move: %1; press again</translation>
    </message>
    <message>
        <source>串口被另一个程序占用</source>
        <translation>another program has the port</translation>
    </message>
    <message>
        <source>控制板未接受参数：已恢复原值</source>
        <translation>the board did not take a parameter: the old values are back</translation>
    </message>
    <message>
        <source>控制板没有应答</source>
        <translation>The board does not answer</translation>
    </message>
    <message>
        <source>控制板恢复应答：所有轴已停止</source>
        <translation>The board answers again: all axes are stopped</translation>
    </message>
    <message>
        <source>控制板被暂停（按键或安全门）：所有轴已停止</source>
        <translation>The board was put on hold (button or safety door): all axes are stopped</translation>
    </message>
    <message>
        <source>控制板拒绝了行程以外的目标：所有轴已停止</source>
        <translation>The board refused a target outside its travel: all axes are stopped</translation>
    </message>
    <message>
        <source>该轴偏离了指令（控制板坐标 %1）：所有轴已停止</source>
        <translation>The axis was found where it was not sent (at %1 of the board): all axes are stopped</translation>
    </message>
    <message>
        <source>线路故障：各轴停下后继续</source>
        <translation>Trouble on the line: the axes stop and go on</translation>
    </message>
    <message>
        <source>线路故障过多：所有轴已停止</source>
        <translation>Too much trouble on the line: all axes are stopped</translation>
    </message>
    <message>
        <source>电脑停顿了 %1 ms：各轴已停下，重新加速</source>
        <translation>The computer stood still for %1 ms: the axes have stopped and begin a new ramp</translation>
    </message>
    <message>
        <source>该轴的限位开关处于闭合状态</source>
        <translation>The limit switch of this axis is closed</translation>
    </message>
    <message>
        <source>硬限位已关闭（$21=0），直到该轴沿原路慢速离开开关</source>
        <translation>Hard limits are off ($21=0) until the axis is off its switch, slowly and the way it came</translation>
    </message>
    <message>
        <source>限位开关已断开：硬限位已恢复（$21=1）</source>
        <translation>The switch is open: hard limits are on again ($21=1)</translation>
    </message>
    <message>
        <source>控制板参数 $1 不是 255：每次停止后电机断电</source>
        <translation>The board&apos;s setting $1 is not 255: the motors lose their current after each stop</translation>
    </message>
    <message>
        <source>使能关闭只是不允许启动：电机电流不会切断</source>
        <translation>Off only refuses starts: the motor keeps its current</translation>
    </message>
    <message>
        <source>该轴的分辨率是 %1，粗于所要求的值</source>
        <translation>The axis is exact to %1, coarser than what was asked for</translation>
    </message>
    <message>
        <source>速度限制为 %1：由控制板参数 $%2 决定</source>
        <translation>The speed is held to %1: the board&apos;s setting $%2 lifts that</translation>
    </message>
    <message>
        <source>控制板处于报警或锁定状态：请关闭再打开使能以解锁，或回零</source>
        <translation>the board is locked: switch an axis off and on to unlock it, or home</translation>
    </message>
    <message>
        <source>请先回零：位置未知</source>
        <translation>home first: the position is not known</translation>
    </message>
    <message>
        <source>控制板忙：正在回零、保存参数或停止</source>
        <translation>the board is busy: it homes, stores a parameter or comes to rest</translation>
    </message>
    <message>
        <source>碰到限位开关，位置已丢失：请关闭再打开使能以解锁，沿原路慢速离开，再回零</source>
        <translation>A limit switch was hit, the position is lost: switch the axis off and on to unlock it, drive back slowly the way it came, home</translation>
    </message>
    <message>
        <source>回零失败，位置已丢失：请检查限位开关，再回零</source>
        <translation>Homing failed, the position is lost: look at the limit switches, home again</translation>
    </message>
    <message>
        <source>控制板报警 %1：请关闭再打开使能以解锁，或回零</source>
        <translation>The board is in alarm %1: switch an axis off and on to unlock it, or home</translation>
    </message>
    <message>
        <source>控制板已重新启动，位置已丢失：请回零</source>
        <translation>The board has restarted, the position is lost: home</translation>
    </message>
    <message>
        <source>回零已中止，位置已丢失</source>
        <translation>Homing was stopped, the position is lost</translation>
    </message>
    <message>
        <source>控制板已锁定：请关闭再打开使能以解锁，或回零</source>
        <translation>The board is locked: switch an axis off and on to unlock it, or home</translation>
    </message>
    <message>
        <source>没有打开串口的权限：请将用户加入 dialout 组，然后重新登录</source>
        <translation>you may not open the port: add your user to the group dialout, then log in again</translation>
    </message>
</context>
<context>
    <name>StepModel</name>
    <message>
        <source>序号</source>
        <translation>No.</translation>
    </message>
    <message>
        <source>动作</source>
        <translation>What</translation>
    </message>
    <message>
        <source>目标</source>
        <translation>Where</translation>
    </message>
    <message>
        <source>速度</source>
        <translation>Speed</translation>
    </message>
    <message>
        <source>等待</source>
        <translation>Wait</translation>
    </message>
</context>
<context>
    <name>TrustMark</name>
    <message>
        <source>位置：%1</source>
        <translation>Position: %1</translation>
    </message>
    <message>
        <source>已回零 %1</source>
        <translation>homed %1</translation>
    </message>
    <message>
        <source>%1 起连接中断</source>
        <translation>link lost since %1</translation>
    </message>
    <message>
        <source>%1 连接曾中断，请核对位置</source>
        <translation>link was lost at %1, check position</translation>
    </message>
    <message>
        <source>%1 秒无应答</source>
        <translation>no answer for %1 s</translation>
    </message>
    <message>
        <source>未回零</source>
        <translation>not homed</translation>
    </message>
</context>
<context>
    <name>WorkbenchWidget</name>
    <message>
        <source>工作台</source>
        <translation>Workbench</translation>
    </message>
    <message>
        <source>最大化</source>
        <translation>Maximize</translation>
    </message>
    <message>
        <source>关闭</source>
        <translation>Close</translation>
    </message>
    <message>
        <source>保存诊断信息…</source>
        <translation>Save diagnostics …</translation>
    </message>
    <message>
        <source>日志、事件、最近的记录、版本和设置，存为一个 ZIP 文件，发给协助您的人</source>
        <translation>Log, events, what was recorded last, versions and settings in one ZIP file, for whoever helps you</translation>
    </message>
    <message>
        <source>保存诊断信息</source>
        <translation>Save diagnostics</translation>
    </message>
    <message>
        <source>诊断信息已保存到
%1</source>
        <translation>The diagnostics are saved to
%1</translation>
    </message>
    <message>
        <source>诊断信息未能保存到
%1</source>
        <translation>The diagnostics could not be saved to
%1</translation>
    </message>
    <message>
        <source>序列正在运行。关闭窗口后让它继续运行吗？
选择“取消”将停止序列。</source>
        <translation>A sequence is running. Let it go on without this window?
Cancel stops the sequence.</translation>
    </message>
</context>
</TS>
