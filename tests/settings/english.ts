<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US" sourcelanguage="zh_CN">
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
        <source>2号轴</source>
        <translation>Axis 2</translation>
    </message>
    <message>
        <source>3号轴</source>
        <translation>Axis 3</translation>
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
</context>
<context>
    <name>AxisSettings</name>
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
</TS>
